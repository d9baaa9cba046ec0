#include "script/ScriptValues.h"

#include <velmora/definition/ScriptObjectDefinition.h>

#include "script/ScriptText.h"

namespace host {

namespace {

using velmora::AnonObject;
using velmora::ScriptArray;
using velmora::ScriptObjectBase;
using velmora::ScriptObjectPtr;
using velmora::ScriptValue;
using velmora::ScriptValueKind;

constexpr const char* kHandle = DUK_HIDDEN_SYMBOL("handle");
constexpr const char* kOwner = DUK_HIDDEN_SYMBOL("owner");
constexpr int kMostNesting = 64;
constexpr duk_size_t kMostElements = duk_size_t{1} << 24;

std::string_view TextAt(duk_context* ioHeap, duk_idx_t inIndex)
{
    duk_size_t size = 0;
    const char* const text = duk_get_lstring(ioHeap, inIndex, &size);
    return {text, size};
}

void Read(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue, int inDepth);

void ReadArray(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue, int inDepth)
{
    const duk_size_t length = duk_get_length(ioHeap, inIndex);
    if (length > kMostElements) {
        (void)duk_range_error(ioHeap, "an array has too many elements");
    }
    outValue = ScriptArray(length);
    auto& elements = const_cast<ScriptArray&>(outValue.GetArray());
    for (duk_size_t i = 0; i < length; ++i) {
        duk_get_prop_index(ioHeap, inIndex, static_cast<duk_uarridx_t>(i));
        Read(ioHeap, duk_get_top_index(ioHeap), elements[i], inDepth + 1);
        duk_pop(ioHeap);
    }
}

void ReadRecord(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue, int inDepth)
{
    auto* const record = new AnonObject;
    outValue = ScriptObjectPtr(record);
    duk_enum(ioHeap, inIndex, DUK_ENUM_OWN_PROPERTIES_ONLY);
    while (duk_next(ioHeap, -1, 1)) {
        const auto key = TextAt(ioHeap, -2);
        record->SetProperty(ToUtf8(key), ScriptValue());
        // It stands in the record already, so that it has an owner while it is read.
        auto& value = const_cast<ScriptValue&>(record->GetProperties().back().second);
        Read(ioHeap, duk_get_top_index(ioHeap), value, inDepth + 1);
        duk_pop_2(ioHeap);
    }
    duk_pop(ioHeap);
}

void ReadObject(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue, int inDepth)
{
    duk_require_stack(ioHeap, 8);
    if (auto* const object = GetWrapped(ioHeap, inIndex)) {
        outValue = ScriptObjectPtr(object);
    } else if (duk_is_function(ioHeap, inIndex)) {
        (void)duk_type_error(ioHeap, "a function can't be passed on");
    } else if (duk_is_array(ioHeap, inIndex) || duk_is_buffer_data(ioHeap, inIndex)) {
        ReadArray(ioHeap, inIndex, outValue, inDepth);
    } else {
        ReadRecord(ioHeap, inIndex, outValue, inDepth);
    }
}

void Read(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue, int inDepth)
{
    if (inDepth > kMostNesting) {
        (void)duk_range_error(ioHeap, "values are nested too deep");
    }
    switch (duk_get_type(ioHeap, inIndex)) {
    case DUK_TYPE_BOOLEAN:
        outValue = duk_get_boolean(ioHeap, inIndex) != 0;
        break;
    case DUK_TYPE_NUMBER:
        outValue = static_cast<double>(duk_get_number(ioHeap, inIndex));
        break;
    case DUK_TYPE_STRING:
        if (duk_is_symbol(ioHeap, inIndex)) {
            (void)duk_type_error(ioHeap, "a symbol can't be passed on");
        }
        outValue = ToUtf8(TextAt(ioHeap, inIndex));
        break;
    case DUK_TYPE_OBJECT:
        ReadObject(ioHeap, inIndex, outValue, inDepth);
        break;
    default:
        break; // nothing
    }
}

void PushRecord(duk_context* ioHeap, const AnonObject& inRecord)
{
    duk_push_object(ioHeap);
    for (const auto& [name, value] : inRecord.GetProperties()) {
        PushText(ioHeap, name);
        PushValue(ioHeap, value);
        duk_put_prop(ioHeap, -3);
    }
}

void PushWrapped(duk_context* ioHeap, ScriptObjectBase* inObject)
{
    duk_push_object(ioHeap);
    if (const auto* const definition = inObject->GetDefinition()) {
        duk_push_heap_stash(ioHeap);
        duk_get_prop_string(ioHeap, -1, definition->GetFullName().c_str());
        duk_set_prototype(ioHeap, -3);
        duk_pop(ioHeap);
    }
    duk_push_pointer(ioHeap, duk_get_heapptr(ioHeap, -1));
    duk_put_prop_string(ioHeap, -2, kOwner);
    duk_push_pointer(ioHeap, inObject);
    duk_put_prop_string(ioHeap, -2, kHandle);
    intrusive_ptr_add_ref(inObject); // given back by Finalize
}

/// An object that a script derives from a wrapped one inherits finalizer and handle, and owns neither.
bool OwnsHandle(duk_context* ioHeap)
{
    duk_get_prop_string(ioHeap, 0, kOwner);
    const bool isOwner = duk_get_pointer(ioHeap, -1) == duk_get_heapptr(ioHeap, 0);
    duk_pop(ioHeap);
    return isOwner;
}

duk_ret_t Finalize(duk_context* ioHeap)
{
    auto* const object = GetWrapped(ioHeap, 0);
    if (object != nullptr && OwnsHandle(ioHeap)) {
        duk_push_undefined(ioHeap);
        duk_put_prop_string(ioHeap, 0, kHandle);
        intrusive_ptr_release(object);
    }
    return 0;
}

} // namespace

ScriptObjectBase* GetWrapped(duk_context* ioHeap, duk_idx_t inIndex)
{
    void* pointer = nullptr;
    if (duk_is_object(ioHeap, inIndex)) {
        duk_get_prop_string(ioHeap, inIndex, kHandle);
        pointer = duk_get_pointer(ioHeap, -1);
        duk_pop(ioHeap);
    }
    return static_cast<ScriptObjectBase*>(pointer);
}

void StorePrototype(duk_context* ioHeap, const velmora::definition::ScriptObjectDefinitionBase& inDefinition)
{
    duk_push_c_function(ioHeap, Finalize, 1);
    duk_set_finalizer(ioHeap, -2);
    duk_push_heap_stash(ioHeap);
    duk_insert(ioHeap, -2);
    duk_put_prop_string(ioHeap, -2, inDefinition.GetFullName().c_str());
    duk_pop(ioHeap);
}

void ReadValue(duk_context* ioHeap, duk_idx_t inIndex, ScriptValue& outValue)
{
    Read(ioHeap, inIndex, outValue, 0);
}

void PushValue(duk_context* ioHeap, const ScriptValue& inValue)
{
    duk_require_stack(ioHeap, 8);
    switch (inValue.GetKind()) {
    case ScriptValueKind::kNothing:
        duk_push_undefined(ioHeap);
        break;
    case ScriptValueKind::kBool:
        duk_push_boolean(ioHeap, inValue.GetBool());
        break;
    case ScriptValueKind::kInteger:
    case ScriptValueKind::kNumber:
        duk_push_number(ioHeap, inValue.GetNumber());
        break;
    case ScriptValueKind::kString:
        PushText(ioHeap, inValue.GetString());
        break;
    case ScriptValueKind::kObject: {
        ScriptObjectBase* const object = inValue.GetObject().get(); // the value keeps it alive
        if (const auto* const record = dynamic_cast<const AnonObject*>(object)) {
            PushRecord(ioHeap, *record);
        } else {
            PushWrapped(ioHeap, object);
        }
        break;
    }
    case ScriptValueKind::kArray: {
        const ScriptArray& elements = inValue.GetArray();
        duk_push_array(ioHeap);
        for (std::size_t i = 0; i < elements.size(); ++i) {
            PushValue(ioHeap, elements[i]);
            duk_put_prop_index(ioHeap, -2, static_cast<duk_uarridx_t>(i));
        }
        break;
    }
    }
}

} // namespace host
