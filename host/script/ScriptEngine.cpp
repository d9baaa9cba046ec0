#include "script/ScriptEngine.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include <velmora/ScriptException.h>
#include <velmora/ScriptObject.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

#include "HostError.h"
#include "script/ScriptText.h"
#include "script/ScriptValues.h"

// The engine leaves a function by a jump that runs no destructors. So whatever may fail in it runs in steps
// under duk_safe_call that have no local objects with destructors: those belong to the caller of the step.

namespace host {

namespace {

using velmora::ScriptArray;
using velmora::ScriptObjectBase;
using velmora::ScriptObjectPtr;
using velmora::ScriptValue;
using velmora::definition::ScriptObjectDefinitionBase;

constexpr const char* kItem = DUK_HIDDEN_SYMBOL("item");

enum ItemKind : duk_int_t
{
    kConstruct,
    kMethod,
    kGet,
    kSet
};

/// One call from a script: what goes in, and what comes out of it.
struct Invocation
{
    duk_int_t mKind = kMethod;
    const void* mItem = nullptr;
    ScriptObjectPtr mThis;
    ScriptArray mArguments;
    ScriptValue mResult;
    std::string mError;
    duk_errcode_t mErrorCode = DUK_ERR_NONE;

    void Invoke() noexcept
    {
        try {
            Call();
        } catch (const velmora::ParameterErrorException& error) {
            Fail(DUK_ERR_TYPE_ERROR, error.what());
        } catch (const std::exception& error) {
            Fail(DUK_ERR_ERROR, error.what());
        }
    }

private:
    void Call()
    {
        using namespace velmora::definition;
        if (mKind == kConstruct) {
            mResult = static_cast<const ScriptConstructorDefinition*>(mItem)->Construct(mArguments);
        } else if (mThis == nullptr) {
            throw velmora::ScriptException("called on something that is no object of a script class");
        } else if (mKind == kMethod) {
            mResult = static_cast<const ScriptMethodDefinition*>(mItem)->Call(*mThis, mArguments);
        } else if (mKind == kGet) {
            mResult = static_cast<const ScriptPropertyDefinition*>(mItem)->Get(*mThis);
        } else {
            static_cast<const ScriptPropertyDefinition*>(mItem)->Set(*mThis, mArguments.at(0));
        }
    }

    void Fail(duk_errcode_t inCode, const char* inText)
    {
        mErrorCode = inCode;
        mError = inText;
    }
};

duk_ret_t ReadStep(duk_context* ioHeap, void* ioInvocation)
{
    auto& call = *static_cast<Invocation*>(ioInvocation);
    const duk_idx_t count = duk_get_top(ioHeap);
    call.mArguments.resize(static_cast<std::size_t>(count));
    for (duk_idx_t i = 0; i < count; ++i) {
        ReadValue(ioHeap, i, call.mArguments[static_cast<std::size_t>(i)]);
    }
    duk_push_current_function(ioHeap);
    duk_get_prop_string(ioHeap, -1, kItem);
    call.mItem = duk_get_pointer(ioHeap, -1);
    call.mKind = duk_get_current_magic(ioHeap);
    duk_push_this(ioHeap);
    call.mThis = GetWrapped(ioHeap, -1);
    return 0;
}

duk_ret_t WriteStep(duk_context* ioHeap, void* ioInvocation)
{
    const auto& call = *static_cast<const Invocation*>(ioInvocation);
    if (call.mErrorCode != DUK_ERR_NONE) {
        // Without a place of its own, so that the error tells the script's line.
        duk_push_error_object_raw(ioHeap, call.mErrorCode, nullptr, 0, "");
        PushText(ioHeap, call.mError);
        duk_put_prop_string(ioHeap, -2, "message");
        return duk_throw(ioHeap);
    }
    PushValue(ioHeap, call.mResult);
    return 1;
}

/// Behind every function of a class.
duk_ret_t Dispatch(duk_context* ioHeap)
{
    duk_int_t status = DUK_EXEC_SUCCESS;
    {
        Invocation call;
        status = duk_safe_call(ioHeap, ReadStep, &call, 0, 1);
        if (status == DUK_EXEC_SUCCESS) {
            call.Invoke();
            status = duk_safe_call(ioHeap, WriteStep, &call, 0, 1);
        }
    }
    return status == DUK_EXEC_SUCCESS ? 1 : duk_throw(ioHeap);
}

duk_ret_t RefuseConstruction(duk_context* ioHeap)
{
    return duk_type_error(ioHeap, "scripts can't make objects of this class");
}

void Write(std::string_view inText)
{
    std::fwrite(inText.data(), 1, inText.size(), stdout);
}

duk_ret_t Print(duk_context* ioHeap)
{
    const duk_idx_t count = duk_get_top(ioHeap);
    for (duk_idx_t i = 0; i < count; ++i) {
        duk_size_t size = 0;
        const char* const text = duk_to_lstring(ioHeap, i, &size);
        std::fputs(i > 0 ? " " : "", stdout);
        Write(ToUtf8({text, size}));
    }
    Write("\n");
    return 0;
}

void PushFunction(duk_context* ioHeap, duk_int_t inKind, const void* inItem)
{
    duk_push_c_function(ioHeap, Dispatch, DUK_VARARGS);
    duk_set_magic(ioHeap, -1, inKind);
    duk_push_pointer(ioHeap, const_cast<void*>(inItem));
    duk_put_prop_string(ioHeap, -2, kItem);
}

/// Leaves the object of a namespace, "a.b", on the stack; makes what is missing of it.
void PushNamespace(duk_context* ioHeap, const char* inName)
{
    duk_push_global_object(ioHeap);
    while (*inName != '\0') {
        const char* end = inName;
        while (*end != '\0' && *end != '.') {
            ++end;
        }
        const auto size = static_cast<duk_size_t>(end - inName);
        if (!duk_get_prop_lstring(ioHeap, -1, inName, size)) {
            duk_pop(ioHeap);
            duk_push_object(ioHeap);
            duk_dup_top(ioHeap);
            duk_put_prop_lstring(ioHeap, -3, inName, size);
        }
        duk_remove(ioHeap, -2);
        inName = *end == '.' ? end + 1 : end;
    }
}

void BindPrototype(duk_context* ioHeap, const ScriptObjectDefinitionBase& inDefinition)
{
    duk_push_object(ioHeap);
    for (const auto& method : inDefinition.GetMethods()) {
        PushFunction(ioHeap, kMethod, &method);
        duk_put_prop_string(ioHeap, -2, method.GetName().c_str());
    }
    for (const auto& property : inDefinition.GetProperties()) {
        duk_push_string(ioHeap, property.GetName().c_str());
        PushFunction(ioHeap, kGet, &property);
        PushFunction(ioHeap, kSet, &property); // a read-only one refuses by itself
        duk_def_prop(ioHeap, -4,
                     DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_ENUMERABLE);
    }
    duk_dup_top(ioHeap);
    StorePrototype(ioHeap, inDefinition);
}

void BindClass(duk_context* ioHeap, const ScriptObjectDefinitionBase& inDefinition)
{
    PushNamespace(ioHeap, inDefinition.GetNamespace().c_str());
    if (const auto* const constructor = inDefinition.GetConstructor()) {
        PushFunction(ioHeap, kConstruct, constructor);
    } else {
        duk_push_c_function(ioHeap, RefuseConstruction, DUK_VARARGS);
    }
    for (const auto& constant : inDefinition.GetConstants()) {
        duk_push_string(ioHeap, constant.GetName().c_str());
        PushValue(ioHeap, constant.GetValue());
        duk_def_prop(ioHeap, -3,
                     DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_ENUMERABLE | DUK_DEFPROP_CLEAR_WRITABLE);
    }
    BindPrototype(ioHeap, inDefinition);
    duk_push_string(ioHeap, "constructor");
    duk_dup(ioHeap, -3);
    duk_def_prop(ioHeap, -3, DUK_DEFPROP_HAVE_VALUE);
    // Not enumerable, so that the keys of a class are its constants.
    duk_push_string(ioHeap, "prototype");
    duk_insert(ioHeap, -2);
    duk_def_prop(ioHeap, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_ENUMERABLE);
    duk_put_prop_string(ioHeap, -2, inDefinition.GetClassName().c_str());
    duk_pop(ioHeap);
}

struct Globals
{
    const std::vector<std::string>& mArguments;
    std::vector<const ScriptObjectDefinitionBase*> mDefinitions;
};

duk_ret_t BindStep(duk_context* ioHeap, void* inGlobals)
{
    const auto& globals = *static_cast<const Globals*>(inGlobals);
    for (const auto* const definition : globals.mDefinitions) {
        BindClass(ioHeap, *definition);
    }
    duk_push_c_function(ioHeap, Print, DUK_VARARGS);
    duk_put_global_string(ioHeap, "print");
    duk_push_array(ioHeap);
    for (std::size_t i = 0; i < globals.mArguments.size(); ++i) {
        PushText(ioHeap, globals.mArguments[i]);
        duk_put_prop_index(ioHeap, -2, static_cast<duk_uarridx_t>(i));
    }
    duk_put_global_string(ioHeap, "args");
    return 0;
}

struct Source
{
    const std::string& mName;
    const std::string& mText;
};

duk_ret_t RunStep(duk_context* ioHeap, void* inSource)
{
    const auto& source = *static_cast<const Source*>(inSource);
    PushText(ioHeap, source.mName);
    duk_compile_lstring_filename(ioHeap, 0, source.mText.data(), source.mText.size());
    duk_call(ioHeap, 0);
    return 0;
}

/// Turns the error at the bottom of the stack into its text, and puts its line on top, 0 where it has none.
duk_ret_t DescribeStep(duk_context* ioHeap, void*)
{
    duk_push_int(ioHeap, 0);
    if (duk_is_error(ioHeap, -2)) {
        duk_get_prop_string(ioHeap, -2, "lineNumber");
        duk_replace(ioHeap, -2);
    }
    duk_safe_to_string(ioHeap, -2);
    return 2;
}

void ExitOnFatal(void*, const char* inText)
{
    std::fprintf(stderr, "tessaro-host: script engine: %s\n", inText != nullptr ? inText : "failed");
    std::_Exit(HostError::kWorkFailed);
}

} // namespace

ScriptEngine::ScriptEngine(const std::vector<std::string>& inArguments)
    : mHeap(duk_create_heap(nullptr, nullptr, nullptr, nullptr, ExitOnFatal))
{
    Globals globals{inArguments, velmora::definition::GetDefinitions()};
    if (!mHeap || duk_safe_call(mHeap.get(), BindStep, &globals, 0, 1) != DUK_EXEC_SUCCESS) {
        throw std::bad_alloc();
    }
    duk_pop(mHeap.get());
}

void ScriptEngine::Run(const std::string& inName, const std::string& inSource)
{
    Source source{inName, inSource};
    duk_context* const heap = mHeap.get();
    if (duk_safe_call(heap, RunStep, &source, 0, 1) != DUK_EXEC_SUCCESS) {
        duk_safe_call(heap, DescribeStep, nullptr, 1, 2); // an error of its own takes the place of both
        const int line = duk_get_int(heap, -1);
        const std::string text = ToUtf8(duk_safe_to_string(heap, -2));
        duk_pop_2(heap);
        throw FileError(line > 0 ? inName + ":" + std::to_string(line) : inName, text);
    }
    duk_pop(heap);
}

} // namespace host
