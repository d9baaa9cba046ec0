#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Upper bound of a frequency: half of whatever the sampling rate is.
inline constexpr double kHalfTheRate = std::numeric_limits<double>::infinity();

/// One piece of a parameter's value.
struct FieldSpec
{
    enum class Kind
    {
        kNumber,
        kInteger,
        kSwitch,
        kChoice,
        kText
    };

    std::string mName; ///< empty where the parameter has this one field only
    Kind mKind = Kind::kNumber;
    std::string mUnit;
    double mLow = 0.0;
    double mHigh = 0.0;
    std::string mDefault; ///< as it would be written
    std::vector<std::string> mChoices;
};

FieldSpec NumberField(std::string inName, std::string inUnit, double inLow, double inHigh, double inDefault);
FieldSpec IntegerField(std::string inName, std::string inUnit, int inLow, int inHigh, int inDefault);
FieldSpec ChoiceField(std::string inName, std::vector<std::string> inChoices, std::size_t inDefault = 0);

/// A parameter of an effect: a name and one or more fields, written `name=field/field/...`.
struct ParameterSpec
{
    std::string mName;
    std::string mDescription;
    std::vector<FieldSpec> mFields;
    std::size_t mMostTimes = 1;   ///< how often it may be given
    bool mOffUnlessGiven = false; ///< whether the defaults count only for fields left out
};

ParameterSpec NumberParameter(std::string inName, std::string inDescription, std::string inUnit, double inLow,
                              double inHigh, double inDefault);
ParameterSpec SwitchParameter(std::string inName, std::string inDescription, bool inDefault);
ParameterSpec ChoiceParameter(std::string inName, std::string inDescription,
                              std::vector<std::string> inChoices, std::size_t inDefault = 0);

/// "20 to 20000 Hz", "on or off", "cos, log".
std::string DescribeRange(const FieldSpec& inField);

/// The value of a field: its text, and what the text stands for: the number, 0 or 1 for a switch, the index
/// of a choice.
struct FieldValue
{
    std::string mText;
    double mNumber = 0.0;
};

/// Reads a field; an empty text stands for the default. Returns false for what is no such value.
bool ReadField(const FieldSpec& inField, std::string_view inText, FieldValue& outValue);

using FieldValues = std::vector<FieldValue>;

/// The values of all parameters of one effect, given or default. Effects ask by name; a name that the effect
/// has not registered is a mistake in its code and throws `std::logic_error`.
class ParameterValues
{
public:
    explicit ParameterValues(const std::vector<ParameterSpec>& inSpecs);

    /// Adds a given value, which has as many fields as the parameter.
    void Give(const std::string& inName, FieldValues inFields);

    /// How often a parameter was given.
    std::size_t GetCount(const std::string& inName) const;
    bool IsGiven(const std::string& inName) const { return GetCount(inName) > 0; }

    /// `inIndex` counts the times that a parameter was given, where it may be given more than once.
    double GetNumber(const std::string& inName, const std::string& inField = "",
                     std::size_t inIndex = 0) const;
    int GetInteger(const std::string& inName, const std::string& inField = "", std::size_t inIndex = 0) const;
    bool GetSwitch(const std::string& inName) const { return GetNumber(inName) != 0.0; }
    const std::string& GetText(const std::string& inName, const std::string& inField = "",
                               std::size_t inIndex = 0) const;

    /// Fields of each time that the parameter was given.
    const std::vector<FieldValues>& GetGiven(const std::string& inName) const;

    const std::vector<ParameterSpec>& GetSpecs() const { return *mSpecs; }

private:
    const FieldValue& Find(const std::string& inName, const std::string& inField, std::size_t inIndex) const;

    const std::vector<ParameterSpec>* mSpecs; ///< of the registry, which outlives everything
    std::map<std::string, FieldValues> mDefaults;
    std::map<std::string, std::vector<FieldValues>> mGiven;
};

} // namespace host
