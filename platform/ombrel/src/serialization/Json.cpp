#include <ombrel/serialization/Json.h>

#include <algorithm>
#include <cstdint>
#include <optional>

#include <nlohmann/json.hpp>

#include <ombrel/config/OmbrelException.h>

namespace ombrel::serialization {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostLevels = 256;

std::any* FindProperty(Object& inObject, std::string_view inName)
{
    const auto found = std::find_if(inObject.begin(), inObject.end(),
                                    [inName](const auto& inProperty) { return inProperty.first == inName; });
    return found == inObject.end() ? nullptr : &found->second;
}

const std::any* FindProperty(const std::any& inValue, std::string_view inName)
{
    const auto* object = std::any_cast<Object>(&inValue);
    return object ? FindProperty(const_cast<Object&>(*object), inName) : nullptr;
}

/// Converts a value that holds one of the types.
template <typename... T>
std::optional<Json> ConvertScalar(const std::any& inValue)
{
    std::optional<Json> json;
    const auto tryOne = [&](const auto* inHeld) {
        if (inHeld) {
            json = *inHeld;
        }
    };
    (tryOne(std::any_cast<T>(&inValue)), ...);
    return json;
}

Json ToJson(const std::any& inValue)
{
    if (!inValue.has_value()) {
        return nullptr;
    }
    if (const auto* array = std::any_cast<Array>(&inValue)) {
        Json json = Json::array();
        for (const auto& element : *array) {
            json.push_back(ToJson(element));
        }
        return json;
    }
    if (const auto* object = std::any_cast<Object>(&inValue)) {
        Json json = Json::object();
        for (const auto& [name, value] : *object) {
            json[name] = ToJson(value);
        }
        return json;
    }
    // The double of the same value.
    if (const auto* number = std::any_cast<float>(&inValue)) {
        return static_cast<double>(*number);
    }
    auto json = ConvertScalar<bool, signed char, unsigned char, short, unsigned short, int, unsigned, long,
                              unsigned long, long long, unsigned long long, double, std::string, const char*>(
        inValue);
    if (!json) {
        throw config::ombrel_exception("A value of this type has no JSON form.", config::kResultInvalidValue);
    }
    return std::move(*json);
}

std::any ToAny(const Json& inJson)
{
    switch (inJson.type()) {
    case Json::value_t::boolean:
        return inJson.get<bool>();
    case Json::value_t::number_integer:
        return inJson.get<std::int64_t>();
    case Json::value_t::number_unsigned: {
        const auto value = inJson.get<std::uint64_t>();
        return value <= static_cast<std::uint64_t>(INT64_MAX) ? std::any(static_cast<std::int64_t>(value))
                                                              : std::any(value);
    }
    case Json::value_t::number_float:
        return inJson.get<double>();
    case Json::value_t::string:
        return inJson.get<std::string>();
    case Json::value_t::array: {
        Array array;
        for (const auto& element : inJson) {
            array.push_back(ToAny(element));
        }
        return array;
    }
    case Json::value_t::object: {
        Object object;
        for (const auto& [name, value] : inJson.items()) {
            object.emplace_back(name, ToAny(value));
        }
        return object;
    }
    default:
        return {};
    }
}

/// Whether brackets nest no deeper than a recursive reader should follow.
bool IsShallow(std::string_view inText)
{
    std::size_t level = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const char character = inText[i];
        if (isInString) {
            i += character == '\\';
            isInString = character != '"';
        } else if (character == '"') {
            isInString = true;
        } else if (character == '[' || character == '{') {
            if (++level > kMostLevels) {
                return false;
            }
        } else if ((character == ']' || character == '}') && level > 0) {
            --level;
        }
    }
    return true;
}

} // namespace

BadAnyCast::~BadAnyCast() = default;

const char* BadAnyCast::what() const noexcept
{
    return "Bad any_cast";
}

void details::ThrowBadAnyCast()
{
    throw BadAnyCast();
}

bool ObjectHasProperty(const std::any& inObject, std::string_view inName)
{
    return FindProperty(inObject, inName) != nullptr;
}

std::any GetVariantInObject(const std::any& inObject, std::string_view inName)
{
    const auto* value = FindProperty(inObject, inName);
    return value ? *value : std::any();
}

void AddToObject(std::any& ioObject, std::string_view inName, std::any inValue)
{
    if (!ioObject.has_value()) {
        ioObject = Object();
    }
    auto* object = std::any_cast<Object>(&ioObject);
    if (object == nullptr) {
        throw BadAnyCast();
    }
    if (auto* value = FindProperty(*object, inName)) {
        *value = std::move(inValue);
    } else {
        object->emplace_back(inName, std::move(inValue));
    }
}

std::string WriteJSON(const std::any& inValue, int inIndent)
{
    return ToJson(inValue).dump(inIndent, ' ', false, Json::error_handler_t::replace);
}

bool ReadJSON(std::string_view inText, std::any& outValue)
{
    outValue.reset();
    if (!IsShallow(inText)) {
        return false;
    }
    const Json json = Json::parse(inText, nullptr, false);
    if (json.is_discarded()) {
        return false;
    }
    outValue = ToAny(json);
    return true;
}

} // namespace ombrel::serialization
