#include "ChainDescription.h"

#include <algorithm>

#include "HostError.h"
#include "OptionText.h"

namespace host {

namespace {

std::vector<std::string> ListEffectNames()
{
    std::vector<std::string> names;
    for (const auto& entry : GetEffects()) {
        names.push_back(entry.mName);
    }
    return names;
}

const EffectEntry& FindEntry(const ChainSource& inSource, const std::string& inEffect)
{
    const auto* entry = FindEffect(inEffect);
    if (entry == nullptr) {
        inSource.Fail("there is no effect '" + inEffect + "'" + SuggestName(inEffect, ListEffectNames()) +
                      " 'tessaro-host effects' lists them");
    }
    return *entry;
}

/// Single letters to change, add or take away to turn one word into the other.
std::size_t EditDistance(const std::string& inFrom, const std::string& inTo)
{
    std::vector<std::size_t> row(inTo.size() + 1);
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = i;
    }
    for (std::size_t i = 0; i < inFrom.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t k = 0; k < inTo.size(); ++k) {
            const std::size_t change = diagonal + (inFrom[i] != inTo[k]);
            diagonal = row[k + 1];
            row[k + 1] = std::min({change, row[k] + 1, row[k + 1] + 1});
        }
    }
    return row.back();
}

/// A word that begins another, like "freq", is nearer to it than any misspelling.
std::size_t Unlikeness(const std::string& inWord, const std::string& inName)
{
    const bool isBeginning = inWord.size() > 1 && inName.rfind(inWord, 0) == 0;
    return isBeginning ? 0 : EditDistance(inWord, inName);
}

const char* DescribeKind(const FieldSpec& inField)
{
    switch (inField.mKind) {
    case FieldSpec::Kind::kNumber:
        return "a number from ";
    case FieldSpec::Kind::kInteger:
        return "a whole number from ";
    case FieldSpec::Kind::kChoice:
        return "one of ";
    default:
        return "";
    }
}

std::string QuoteField(const std::string& inText)
{
    if (inText.find_first_of(",;:=/' \t\n") == std::string::npos) {
        return inText;
    }
    std::string quoted = "'";
    for (const char character : inText) {
        quoted += character == '\'' ? "''" : std::string(1, character);
    }
    return quoted + "'";
}

/// Leaves out fields at the end that have their defaults.
std::string FormatFields(const ParameterSpec& inSpec, const FieldValues& inValues)
{
    std::size_t count = inValues.size();
    while (count > 1 && inValues[count - 1].mText == inSpec.mFields[count - 1].mDefault) {
        --count;
    }
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "" : "/") + QuoteField(inValues[i].mText);
    }
    return text;
}

} // namespace

void ChainSource::Fail(const std::string& inReason) const
{
    if (mIsFile) {
        throw FileError(mName, inReason);
    }
    throw UsageError(mName, inReason);
}

std::string SuggestName(const std::string& inWord, const std::vector<std::string>& inNames)
{
    const auto nearest = std::min_element(inNames.begin(), inNames.end(),
                                          [&inWord](const std::string& inLeft, const std::string& inRight) {
                                              return Unlikeness(inWord, inLeft) < Unlikeness(inWord, inRight);
                                          });
    if (nearest != inNames.end() && 2 * Unlikeness(inWord, *nearest) <= nearest->size() + 1) {
        return "; did you mean '" + *nearest + "'?";
    }
    std::string text;
    for (const auto& name : inNames) {
        text += (text.empty() ? "; there are " : ", ") + name;
    }
    return text + ";";
}

std::string NameField(const ParameterSpec& inSpec, const FieldSpec& inField)
{
    return inField.mName.empty() ? inSpec.mName : inSpec.mName + " " + inField.mName;
}

std::string DescribeForm(const ParameterSpec& inSpec)
{
    std::string form = inSpec.mName + "=";
    for (const auto& field : inSpec.mFields) {
        form +=
            (&field == &inSpec.mFields.front() ? "" : "/") + (field.mName.empty() ? "VALUE" : field.mName);
    }
    return form;
}

EffectSetting::EffectSetting(const ChainSource& inSource, const std::string& inEffect)
    : mEntry(&FindEntry(inSource, inEffect)), mValues(mEntry->mParameters)
{
}

const ParameterSpec& EffectSetting::FindSpec(const ChainSource& inSource,
                                             const std::string& inParameter) const
{
    std::vector<std::string> names;
    for (const auto& spec : mEntry->mParameters) {
        if (spec.mName == inParameter) {
            return spec;
        }
        names.push_back(spec.mName);
    }
    inSource.Fail(mEntry->mName + " has no parameter '" + inParameter + "'" +
                  SuggestName(inParameter, names) + " 'tessaro-host effects " + mEntry->mName +
                  "' explains them");
}

void EffectSetting::Give(const ChainSource& inSource, const std::string& inParameter,
                         const std::vector<std::string>& inFields)
{
    const auto& spec = FindSpec(inSource, inParameter);
    const auto where = mEntry->mName + ": ";
    if (mValues.GetCount(inParameter) >= spec.mMostTimes) {
        inSource.Fail(where + inParameter + " is given more than " +
                      (spec.mMostTimes == 1 ? "once" : std::to_string(spec.mMostTimes) + " times"));
    }
    if (inFields.size() > spec.mFields.size()) {
        inSource.Fail(where + inParameter + " has " + std::to_string(inFields.size()) + " values; write " +
                      DescribeForm(spec));
    }
    FieldValues values(spec.mFields.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto text = i < inFields.size() ? inFields[i] : "";
        if (!ReadField(spec.mFields[i], text, values[i])) {
            inSource.Fail(where + NameField(spec, spec.mFields[i]) + ": '" + text + "' is not " +
                          DescribeKind(spec.mFields[i]) + DescribeRange(spec.mFields[i]));
        }
    }
    mValues.Give(inParameter, std::move(values));
}

void EffectSetting::CheckRate(const ChainSource& inSource, int inSampleRate) const
{
    for (const auto& spec : mEntry->mParameters) {
        for (const auto& values : mValues.GetGiven(spec.mName)) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (spec.mFields[i].mHigh == kHalfTheRate && values[i].mNumber > inSampleRate / 2.0) {
                    inSource.Fail(mEntry->mName + ": " + NameField(spec, spec.mFields[i]) + ": " +
                                  values[i].mText + " Hz lies above half the sampling rate, " +
                                  ShortenNumber(inSampleRate / 2.0) + " Hz");
                }
            }
        }
    }
}

std::string FormatChain(const ChainDescription& inChain)
{
    std::string text;
    for (const auto& setting : inChain.mEffects) {
        text += (text.empty() ? "" : ";") + setting.GetEntry().mName;
        char separator = ':';
        for (const auto& spec : setting.GetEntry().mParameters) {
            for (const auto& values : setting.GetValues().GetGiven(spec.mName)) {
                text += separator + spec.mName + "=" + FormatFields(spec, values);
                separator = ',';
            }
        }
    }
    return text;
}

} // namespace host
