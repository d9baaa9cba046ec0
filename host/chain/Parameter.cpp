#include "Parameter.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "OptionText.h"

namespace host {

namespace {

bool ReadSwitch(std::string_view inText, double& outNumber)
{
    const bool isOn = inText == "on" || inText == "1" || inText == "true";
    const bool isOff = inText == "off" || inText == "0" || inText == "false";
    outNumber = isOn ? 1.0 : 0.0;
    return isOn || isOff;
}

bool ReadChoice(const std::vector<std::string>& inChoices, std::string_view inText, double& outNumber)
{
    const auto found = std::find(inChoices.begin(), inChoices.end(), inText);
    outNumber = static_cast<double>(found - inChoices.begin());
    return found != inChoices.end();
}

bool ReadNumberInRange(const FieldSpec& inField, std::string_view inText, double& outNumber)
{
    const auto number = ReadNumber(inText);
    if (!number || *number < inField.mLow || *number > inField.mHigh) {
        return false;
    }
    outNumber = *number;
    return inField.mKind != FieldSpec::Kind::kInteger || std::floor(outNumber) == outNumber;
}

} // namespace

FieldSpec NumberField(std::string inName, std::string inUnit, double inLow, double inHigh, double inDefault)
{
    return {std::move(inName),
            FieldSpec::Kind::kNumber,
            std::move(inUnit),
            inLow,
            inHigh,
            ShortenNumber(inDefault),
            {}};
}

FieldSpec IntegerField(std::string inName, std::string inUnit, int inLow, int inHigh, int inDefault)
{
    return {std::move(inName),
            FieldSpec::Kind::kInteger,
            std::move(inUnit),
            double(inLow),
            double(inHigh),
            std::to_string(inDefault),
            {}};
}

FieldSpec ChoiceField(std::string inName, std::vector<std::string> inChoices, std::size_t inDefault)
{
    auto standard = inChoices.at(inDefault);
    return {std::move(inName),   FieldSpec::Kind::kChoice, "", 0.0, 0.0,
            std::move(standard), std::move(inChoices)};
}

ParameterSpec NumberParameter(std::string inName, std::string inDescription, std::string inUnit, double inLow,
                              double inHigh, double inDefault)
{
    return {std::move(inName),
            std::move(inDescription),
            {NumberField("", std::move(inUnit), inLow, inHigh, inDefault)}};
}

ParameterSpec SwitchParameter(std::string inName, std::string inDescription, bool inDefault)
{
    return {std::move(inName),
            std::move(inDescription),
            {{"", FieldSpec::Kind::kSwitch, "", 0.0, 1.0, inDefault ? "on" : "off", {}}}};
}

ParameterSpec ChoiceParameter(std::string inName, std::string inDescription,
                              std::vector<std::string> inChoices, std::size_t inDefault)
{
    return {std::move(inName), std::move(inDescription), {ChoiceField("", std::move(inChoices), inDefault)}};
}

std::string DescribeRange(const FieldSpec& inField)
{
    switch (inField.mKind) {
    case FieldSpec::Kind::kSwitch:
        return "on or off";
    case FieldSpec::Kind::kText:
        return "text";
    case FieldSpec::Kind::kChoice: {
        std::string text;
        for (const auto& choice : inField.mChoices) {
            text += (text.empty() ? "" : ", ") + choice;
        }
        return text;
    }
    default:
        break;
    }
    const auto unit = inField.mUnit.empty() ? "" : " " + inField.mUnit;
    if (inField.mHigh == kHalfTheRate) {
        return ShortenNumber(inField.mLow) + unit + " to half the sampling rate";
    }
    return ShortenNumber(inField.mLow) + " to " + ShortenNumber(inField.mHigh) + unit;
}

bool ReadField(const FieldSpec& inField, std::string_view inText, FieldValue& outValue)
{
    outValue = {inText.empty() ? inField.mDefault : std::string(inText), 0.0};
    switch (inField.mKind) {
    case FieldSpec::Kind::kText:
        return true;
    case FieldSpec::Kind::kSwitch:
        return ReadSwitch(outValue.mText, outValue.mNumber);
    case FieldSpec::Kind::kChoice:
        return ReadChoice(inField.mChoices, outValue.mText, outValue.mNumber);
    default:
        return ReadNumberInRange(inField, outValue.mText, outValue.mNumber);
    }
}

ParameterValues::ParameterValues(const std::vector<ParameterSpec>& inSpecs) : mSpecs(&inSpecs)
{
    for (const auto& spec : inSpecs) {
        auto& fields = mDefaults[spec.mName];
        for (const auto& field : spec.mFields) {
            ReadField(field, "", fields.emplace_back());
        }
        mGiven[spec.mName] = {};
    }
}

void ParameterValues::Give(const std::string& inName, FieldValues inFields)
{
    mGiven.at(inName).push_back(std::move(inFields));
}

std::size_t ParameterValues::GetCount(const std::string& inName) const
{
    return GetGiven(inName).size();
}

double ParameterValues::GetNumber(const std::string& inName, const std::string& inField,
                                  std::size_t inIndex) const
{
    return Find(inName, inField, inIndex).mNumber;
}

int ParameterValues::GetInteger(const std::string& inName, const std::string& inField,
                                std::size_t inIndex) const
{
    return static_cast<int>(Find(inName, inField, inIndex).mNumber);
}

const std::string& ParameterValues::GetText(const std::string& inName, const std::string& inField,
                                            std::size_t inIndex) const
{
    return Find(inName, inField, inIndex).mText;
}

const std::vector<FieldValues>& ParameterValues::GetGiven(const std::string& inName) const
{
    return mGiven.at(inName);
}

const FieldValue& ParameterValues::Find(const std::string& inName, const std::string& inField,
                                        std::size_t inIndex) const
{
    for (const auto& spec : *mSpecs) {
        for (std::size_t i = 0; spec.mName == inName && i < spec.mFields.size(); ++i) {
            if (spec.mFields[i].mName == inField) {
                const auto& given = mGiven.at(inName);
                return given.empty() ? mDefaults.at(inName)[i] : given.at(inIndex)[i];
            }
        }
    }
    throw std::logic_error("the effect has no parameter '" + inName + "' with a field '" + inField + "'");
}

} // namespace host
