#include <ombrel/utility/Dictionary.h>

#include <array>
#include <charconv>

namespace ombrel::utility {

namespace {

/// Enough for the shortest exact form of any double and any 64-bit integer.
constexpr std::size_t kNumberLength = 32;

template <typename T>
std::string NumberText(T inValue)
{
    std::array<char, kNumberLength> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), inValue);
    return std::string(text.data(), result.ptr);
}

} // namespace

bool DictionaryValue::GetBool(bool inDefault) const noexcept
{
    const bool* value = std::get_if<bool>(&mValue);
    return value ? *value : inDefault;
}

std::int64_t DictionaryValue::GetInteger(std::int64_t inDefault) const noexcept
{
    const std::int64_t* value = std::get_if<std::int64_t>(&mValue);
    return value ? *value : inDefault;
}

double DictionaryValue::GetDouble(double inDefault) const noexcept
{
    if (const std::int64_t* integer = std::get_if<std::int64_t>(&mValue)) {
        return static_cast<double>(*integer);
    }
    const double* value = std::get_if<double>(&mValue);
    return value ? *value : inDefault;
}

const std::string& DictionaryValue::GetString() const noexcept
{
    static const auto& empty = *new std::string;
    const std::string* value = std::get_if<std::string>(&mValue);
    return value ? *value : empty;
}

std::string DictionaryValue::ToString() const
{
    switch (GetType()) {
    case Type::kBool:
        return GetBool() ? "true" : "false";
    case Type::kInteger:
        return NumberText(GetInteger());
    case Type::kDouble:
        return NumberText(GetDouble());
    case Type::kString:
        return GetString();
    case Type::kNone:
        break;
    }
    return {};
}

void Dictionary::Set(std::string_view inName, DictionaryValue inValue)
{
    mValues.insert_or_assign(std::string(inName), std::move(inValue));
}

const DictionaryValue& Dictionary::Get(std::string_view inName) const noexcept
{
    static const auto& none = *new DictionaryValue;
    const auto found = mValues.find(inName);
    return found != mValues.end() ? found->second : none;
}

bool Dictionary::Contains(std::string_view inName) const noexcept
{
    return mValues.find(inName) != mValues.end();
}

bool Dictionary::Remove(std::string_view inName)
{
    const auto found = mValues.find(inName);
    if (found == mValues.end()) {
        return false;
    }
    mValues.erase(found);
    return true;
}

void Dictionary::Merge(Dictionary&& ioOther)
{
    ioOther.mValues.merge(mValues);
    mValues.swap(ioOther.mValues);
    ioOther.mValues.clear();
}

} // namespace ombrel::utility
