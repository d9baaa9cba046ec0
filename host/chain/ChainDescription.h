#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "EffectRegistry.h"

namespace host {

/// Where a chain was written down, so that what is wrong with it can be told: an option, or a preset file.
class ChainSource
{
public:
    static ChainSource Option(std::string inName) { return {std::move(inName), false}; }
    static ChainSource File(std::string inPath) { return {std::move(inPath), true}; }

    /// Throws `UsageError` or `FileError`.
    [[noreturn]] void Fail(const std::string& inReason) const;

private:
    ChainSource(std::string inName, bool inIsFile) : mName(std::move(inName)), mIsFile(inIsFile) {}

    std::string mName;
    bool mIsFile;
};

/// An effect and what it is set to.
class EffectSetting
{
public:
    /// Fails for an unknown effect, and names the one that may have been meant.
    EffectSetting(const ChainSource& inSource, const std::string& inEffect);

    /// Gives a parameter its fields as texts; an empty text, and fields left out at the end, stand for the
    /// default. Fails for an unknown parameter, for too many fields, for a value that is none or out of
    /// range, and for a parameter given too often.
    void Give(const ChainSource& inSource, const std::string& inParameter,
              const std::vector<std::string>& inFields);

    /// Form and range of a parameter; fails for an unknown one.
    const ParameterSpec& FindSpec(const ChainSource& inSource, const std::string& inParameter) const;

    const EffectEntry& GetEntry() const { return *mEntry; }
    const ParameterValues& GetValues() const { return mValues; }

    /// Fails for a given frequency above half the rate.
    void CheckRate(const ChainSource& inSource, int inSampleRate) const;

private:
    const EffectEntry* mEntry;
    ParameterValues mValues;
};

/// A chain as it was asked for, checked but for what depends on the sampling rate.
struct ChainDescription
{
    ChainSource mSource;
    std::vector<EffectSetting> mEffects;
};

/// `NAME:PARAMETER=VALUE,PARAMETER=FIELD/FIELD/FIELD;NAME:...`. Blanks around a piece do not count; a piece
/// in single quotes is taken as it is, but for a doubled quote, which stands for one. An empty text is a
/// chain without effects.
ChainDescription ParseChain(const std::string& inOption, const std::string& inText);

/// One effect of a chain, "NAME:PARAMETER=VALUE,...".
EffectSetting ParseEffect(const ChainSource& inSource, std::string_view inText);

/// The same effect with the parameters of "PARAMETER=VALUE,..." given anew, the others as they were.
EffectSetting ChangeParameters(const ChainSource& inSource, const EffectSetting& inSetting,
                               std::string_view inText);

/// The chain as `ParseChain` reads it, with the parameters that were given.
std::string FormatChain(const ChainDescription& inChain);

/// How a parameter is written: "band1=frequency/q/gain", or "gain=VALUE" for one field.
std::string DescribeForm(const ParameterSpec& inSpec);

/// How a field is called in messages: "band1 frequency".
std::string NameField(const ParameterSpec& inSpec, const FieldSpec& inField);

/// "; did you mean 'gain'?" with the name that is most like the word, or the list of names when none is.
std::string SuggestName(const std::string& inWord, const std::vector<std::string>& inNames);

} // namespace host
