#include "ChainPreset.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include <nlohmann/json.hpp>

#include "HostError.h"
#include "OutputFile.h"

namespace host {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kVersionKey = "tessaro chain";
constexpr int kVersion = 1;

Json FieldToJson(const FieldSpec& inField, const FieldValue& inValue)
{
    switch (inField.mKind) {
    case FieldSpec::Kind::kNumber:
        return inValue.mNumber;
    case FieldSpec::Kind::kInteger:
        return static_cast<int>(inValue.mNumber);
    case FieldSpec::Kind::kSwitch:
        return inValue.mNumber != 0.0;
    default:
        return inValue.mText;
    }
}

Json ValuesToJson(const ParameterSpec& inSpec, const FieldValues& inValues)
{
    if (inSpec.mFields.front().mName.empty()) {
        return FieldToJson(inSpec.mFields.front(), inValues.front());
    }
    auto object = Json::object();
    for (std::size_t i = 0; i < inValues.size(); ++i) {
        object[inSpec.mFields[i].mName] = FieldToJson(inSpec.mFields[i], inValues[i]);
    }
    return object;
}

Json SettingToJson(const EffectSetting& inSetting)
{
    auto parameters = Json::object();
    for (const auto& spec : inSetting.GetEntry().mParameters) {
        auto times = Json::array();
        for (const auto& values : inSetting.GetValues().GetGiven(spec.mName)) {
            times.push_back(ValuesToJson(spec, values));
        }
        if (!times.empty()) {
            parameters[spec.mName] = spec.mMostTimes == 1 ? times.front() : times;
        }
    }
    return {{"effect", inSetting.GetEntry().mName}, {"parameters", std::move(parameters)}};
}

/// A field of a preset as it would stand in a chain.
std::string FieldToText(const ChainSource& inSource, const std::string& inWhere, const Json& inValue)
{
    if (inValue.is_string()) {
        return inValue.get<std::string>();
    }
    if (inValue.is_boolean()) {
        return inValue.get<bool>() ? "on" : "off";
    }
    if (!inValue.is_number()) {
        inSource.Fail(inWhere + " is neither a number nor a text nor true or false");
    }
    const auto text = inValue.dump();
    const bool endsInZero = text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0;
    return endsInZero ? text.substr(0, text.size() - 2) : text;
}

/// Fails for a member that nobody would read, which is a misspelling most often.
void CheckMembers(const ChainSource& inSource, const std::string& inWhere, const Json& inObject,
                  const std::vector<std::string>& inNames)
{
    for (const auto& item : inObject.items()) {
        if (std::find(inNames.begin(), inNames.end(), item.key()) == inNames.end()) {
            inSource.Fail(inWhere + " has no member '" + item.key() + "'" + SuggestName(item.key(), inNames) +
                          " 'tessaro-host effects' explains what there is");
        }
    }
}

std::vector<std::string> ReadFields(const ChainSource& inSource, const std::string& inWhere,
                                    const ParameterSpec& inSpec, const Json& inValue)
{
    const auto& fields = inSpec.mFields;
    if (fields.front().mName.empty()) {
        return {FieldToText(inSource, inWhere, inValue)};
    }
    if (!inValue.is_object()) {
        inSource.Fail(inWhere + " is not an object of fields");
    }
    std::vector<std::string> names;
    std::vector<std::string> texts(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        names.push_back(fields[i].mName);
        if (inValue.contains(fields[i].mName)) {
            texts[i] = FieldToText(inSource, inWhere + " " + fields[i].mName, inValue[fields[i].mName]);
        }
    }
    CheckMembers(inSource, inWhere, inValue, names);
    return texts;
}

const Json& Member(const ChainSource& inSource, const std::string& inWhere, const Json& inObject,
                   const char* inKey)
{
    if (!inObject.is_object() || !inObject.contains(inKey)) {
        inSource.Fail(inWhere + " has no \"" + inKey + "\"");
    }
    return inObject[inKey];
}

EffectSetting ReadSetting(const ChainSource& inSource, const std::string& inWhere, const Json& inObject)
{
    const auto& name = Member(inSource, inWhere, inObject, "effect");
    if (!name.is_string()) {
        inSource.Fail("the name of " + inWhere + " is not a text");
    }
    CheckMembers(inSource, inWhere, inObject, {"effect", "parameters"});
    EffectSetting setting(inSource, name.get<std::string>());
    if (!inObject.contains("parameters")) {
        return setting;
    }
    if (!inObject["parameters"].is_object()) {
        inSource.Fail("the parameters of " + inWhere + " are not an object");
    }
    for (const auto& item : inObject["parameters"].items()) {
        const auto& spec = setting.FindSpec(inSource, item.key());
        const auto where = setting.GetEntry().mName + ": " + item.key();
        const bool isList = spec.mMostTimes > 1 && item.value().is_array();
        for (const auto& value : isList ? item.value() : Json::array({item.value()})) {
            setting.Give(inSource, item.key(), ReadFields(inSource, where, spec, value));
        }
    }
    return setting;
}

Json ParseJson(const ChainSource& inSource, const std::string& inText)
{
    try {
        return Json::parse(inText);
    } catch (const Json::parse_error& parseError) {
        inSource.Fail("is not a preset: no valid JSON at byte " + std::to_string(parseError.byte));
    } catch (const Json::out_of_range&) {
        inSource.Fail("is not a preset: it holds a number beyond all ranges");
    }
}

} // namespace

ChainDescription ReadPreset(const std::filesystem::path& inPath)
{
    const auto source = ChainSource::File(inPath.string());
    std::error_code error;
    if (std::filesystem::is_directory(inPath, error)) {
        source.Fail("is a directory, not a preset");
    }
    std::ifstream file(inPath);
    if (!file) {
        source.Fail("cannot be read (" + std::generic_category().message(errno) + ")");
    }
    return ParsePreset(source, {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
}

ChainDescription ParsePreset(const ChainSource& inSource, const std::string& inText)
{
    ChainDescription chain{inSource, {}};
    const auto& source = chain.mSource;
    const Json preset = ParseJson(source, inText);
    const auto& version = Member(source, "the preset", preset, kVersionKey);
    if (!version.is_number_integer() || version != kVersion) {
        source.Fail("is a preset of another version than " + std::to_string(kVersion));
    }
    const auto& effects = Member(source, "the preset", preset, "effects");
    CheckMembers(source, "the preset", preset, {kVersionKey, "effects"});
    if (!effects.is_array()) {
        source.Fail("\"effects\" is not a list");
    }
    for (std::size_t i = 0; i < effects.size(); ++i) {
        chain.mEffects.push_back(ReadSetting(source, "effect " + std::to_string(i + 1), effects[i]));
    }
    return chain;
}

std::string FormatPreset(const ChainDescription& inChain)
{
    auto effects = Json::array();
    for (const auto& setting : inChain.mEffects) {
        effects.push_back(SettingToJson(setting));
    }
    const Json preset{{kVersionKey, kVersion}, {"effects", std::move(effects)}};
    return preset.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void WritePreset(const std::filesystem::path& inPath, const ChainDescription& inChain)
{
    const auto text = FormatPreset(inChain);
    OutputFile file(inPath);
    file.Write(text.data(), static_cast<std::int64_t>(text.size()));
    file.ThrowIfFailed();
    file.Commit();
}

} // namespace host
