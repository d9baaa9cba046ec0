#include <velmora/ScriptValue.h>

#include <charconv>
#include <cmath>

#include <ombrel/string/Unicode.h>
#include <velmora/ScriptObject.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora {

namespace {

/// Strings in messages are cut to this many bytes.
constexpr std::size_t kLongestDescribedString = 60;

/// The numbers from -2^63 up to and without this one fit into 64 signed bits.
constexpr double kIntegerLimit = 9223372036854775808.0;

bool IsWholeNumber(double inNumber)
{
    return inNumber >= -kIntegerLimit && inNumber < kIntegerLimit && std::trunc(inNumber) == inNumber;
}

std::string DescribeString(const std::string& inText)
{
    if (inText.size() <= kLongestDescribedString) {
        return "string \"" + inText + "\"";
    }
    std::size_t end = kLongestDescribedString;
    while (end > 0 && (static_cast<unsigned char>(inText[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return "string \"" + inText.substr(0, end) + "...\"";
}

std::string DescribeNumber(double inNumber)
{
    char text[32];
    const auto result = std::to_chars(std::begin(text), std::end(text), inNumber);
    return "number " + std::string(std::begin(text), result.ptr);
}

std::string DescribeObject(const ScriptObjectBase& inObject)
{
    const definition::ScriptObjectDefinitionBase* const definition = inObject.GetDefinition();
    return definition != nullptr ? definition->GetFullName() + " object" : "object";
}

} // namespace

void intrusive_ptr_add_ref(const ScriptObjectBase* inObject) noexcept
{
    inObject->AddRefCount();
}

void intrusive_ptr_release(const ScriptObjectBase* inObject) noexcept
{
    inObject->ReleaseRefCount();
}

ScriptValue::ScriptValue(ombrel::UTF8StringView inText) : mValue(ombrel::string::UTF8ToStd8String(inText)) {}

ScriptValue::ScriptValue(ombrel::UTF16StringView inText) : mValue(ombrel::string::UTF16ToStd8String(inText))
{
}

ScriptValue::ScriptValue(ScriptObjectPtr inObject) noexcept
{
    if (inObject != nullptr) {
        mValue = std::move(inObject);
    }
}

ScriptValue::ScriptValue(const ScriptValue&) = default;
ScriptValue::ScriptValue(ScriptValue&&) noexcept = default;
ScriptValue& ScriptValue::operator=(const ScriptValue&) = default;
ScriptValue& ScriptValue::operator=(ScriptValue&&) noexcept = default;
ScriptValue::~ScriptValue() = default;

bool ScriptValue::GetBool() const noexcept
{
    const bool* const value = std::get_if<bool>(&mValue);
    return value != nullptr && *value;
}

bool ScriptValue::IsWhole() const noexcept
{
    const double* const number = std::get_if<double>(&mValue);
    return number != nullptr ? IsWholeNumber(*number) : GetKind() == ScriptValueKind::kInteger;
}

std::int64_t ScriptValue::GetInteger() const noexcept
{
    if (const double* const number = std::get_if<double>(&mValue)) {
        return IsWholeNumber(*number) ? static_cast<std::int64_t>(*number) : 0;
    }
    const std::int64_t* const integer = std::get_if<std::int64_t>(&mValue);
    return integer != nullptr ? *integer : 0;
}

double ScriptValue::GetNumber() const noexcept
{
    if (const std::int64_t* const integer = std::get_if<std::int64_t>(&mValue)) {
        return static_cast<double>(*integer);
    }
    const double* const number = std::get_if<double>(&mValue);
    return number != nullptr ? *number : 0.0;
}

const std::string& ScriptValue::GetString() const noexcept
{
    static const std::string empty;
    const std::string* const text = std::get_if<std::string>(&mValue);
    return text != nullptr ? *text : empty;
}

ScriptObjectPtr ScriptValue::GetObject() const noexcept
{
    const ScriptObjectPtr* const object = std::get_if<ScriptObjectPtr>(&mValue);
    return object != nullptr ? *object : nullptr;
}

const ScriptArray& ScriptValue::GetArray() const noexcept
{
    static const ScriptArray empty;
    const ScriptArray* const elements = std::get_if<ScriptArray>(&mValue);
    return elements != nullptr ? *elements : empty;
}

std::string ScriptValue::Describe() const
{
    switch (GetKind()) {
    case ScriptValueKind::kNothing:
        break;
    case ScriptValueKind::kBool:
        return GetBool() ? "bool true" : "bool false";
    case ScriptValueKind::kInteger:
        return "integer " + std::to_string(GetInteger());
    case ScriptValueKind::kNumber:
        return DescribeNumber(GetNumber());
    case ScriptValueKind::kString:
        return DescribeString(GetString());
    case ScriptValueKind::kObject:
        return DescribeObject(*GetObject());
    case ScriptValueKind::kArray:
        return "array of " + std::to_string(GetArray().size());
    }
    return "nothing";
}

bool operator==(const ScriptValue& inA, const ScriptValue& inB) noexcept
{
    return inA.mValue == inB.mValue;
}

} // namespace velmora
