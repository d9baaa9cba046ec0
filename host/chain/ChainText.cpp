#include <algorithm>

#include "ChainDescription.h"

namespace host {

namespace {

std::string_view Trim(std::string_view inText)
{
    const auto first = inText.find_first_not_of(" \t\n");
    if (first == std::string_view::npos) {
        return {};
    }
    return inText.substr(first, inText.find_last_not_of(" \t\n") - first + 1);
}

/// The first place of a character outside quotes, or the end.
std::size_t FindOutsideQuotes(std::string_view inText, char inCharacter)
{
    bool isQuoted = false;
    for (std::size_t i = 0; i < inText.size(); ++i) {
        if (inText[i] == inCharacter && !isQuoted) {
            return i;
        }
        isQuoted = isQuoted != (inText[i] == '\'');
    }
    return std::string_view::npos;
}

std::vector<std::string_view> SplitOutsideQuotes(std::string_view inText, char inSeparator)
{
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto place = FindOutsideQuotes(inText, inSeparator);
        pieces.push_back(Trim(inText.substr(0, place)));
        if (place == std::string_view::npos) {
            return pieces;
        }
        inText.remove_prefix(place + 1);
    }
}

/// What a piece stands for: itself, or what is between its quotes, where a doubled quote stands for one.
std::string Unquote(const ChainSource& inSource, std::string_view inText)
{
    if (inText.find('\'') == std::string_view::npos) {
        return std::string(inText);
    }
    std::string text;
    bool isWhole = inText.size() > 1 && inText.front() == '\'' && inText.back() == '\'';
    for (std::size_t i = 1; isWhole && i + 1 < inText.size(); ++i) {
        text += inText[i];
        if (inText[i] == '\'') {
            ++i;
            isWhole = i + 1 < inText.size() && inText[i] == '\'';
        }
    }
    if (!isWhole) {
        inSource.Fail("the quotes of " + std::string(inText) +
                      " do not enclose it; one that belongs to a text is doubled");
    }
    return text;
}

void ParseParameter(const ChainSource& inSource, std::string_view inText, EffectSetting& ioSetting)
{
    const auto equals = FindOutsideQuotes(inText, '=');
    if (equals == std::string_view::npos) {
        inSource.Fail(ioSetting.GetEntry().mName + ": '" + std::string(inText) +
                      "' is not PARAMETER=VALUE; write, for example, " + ioSetting.GetEntry().mExample);
    }
    const std::string name(Trim(inText.substr(0, equals)));
    const auto& fields = ioSetting.FindSpec(inSource, name).mFields;
    const auto value = Trim(inText.substr(equals + 1));
    std::vector<std::string> pieces;
    if (fields.size() == 1 && fields.front().mKind == FieldSpec::Kind::kText) {
        pieces.push_back(Unquote(inSource, value)); // most often a path, whose slashes separate no fields
    } else {
        for (const auto piece : SplitOutsideQuotes(value, '/')) {
            pieces.push_back(Unquote(inSource, piece));
        }
    }
    if (value.empty()) {
        inSource.Fail(ioSetting.GetEntry().mName + ": " + name + " has no value");
    }
    ioSetting.Give(inSource, name, pieces);
}

void ParseParameters(const ChainSource& inSource, std::string_view inText, EffectSetting& ioSetting)
{
    for (const auto piece : SplitOutsideQuotes(inText, ',')) {
        ParseParameter(inSource, piece, ioSetting);
    }
}

void CheckQuotes(const ChainSource& inSource, std::string_view inText)
{
    if (std::count(inText.begin(), inText.end(), '\'') % 2 != 0) {
        inSource.Fail("a quote is not closed");
    }
}

} // namespace

EffectSetting ParseEffect(const ChainSource& inSource, std::string_view inText)
{
    CheckQuotes(inSource, inText);
    const auto colon = FindOutsideQuotes(inText, ':');
    EffectSetting setting(inSource, std::string(Trim(inText.substr(0, colon))));
    if (colon != std::string_view::npos) {
        ParseParameters(inSource, inText.substr(colon + 1), setting);
    }
    return setting;
}

EffectSetting ChangeParameters(const ChainSource& inSource, const EffectSetting& inSetting,
                               std::string_view inText)
{
    CheckQuotes(inSource, inText);
    EffectSetting changed(inSource, inSetting.GetEntry().mName);
    ParseParameters(inSource, inText, changed);
    for (const auto& parameter : inSetting.GetEntry().mParameters) {
        if (changed.GetValues().IsGiven(parameter.mName)) {
            continue;
        }
        for (const auto& values : inSetting.GetValues().GetGiven(parameter.mName)) {
            std::vector<std::string> fields;
            for (const auto& value : values) {
                fields.push_back(value.mText);
            }
            changed.Give(inSource, parameter.mName, fields);
        }
    }
    return changed;
}

ChainDescription ParseChain(const std::string& inOption, const std::string& inText)
{
    ChainDescription chain{ChainSource::Option(inOption), {}};
    CheckQuotes(chain.mSource, inText);
    if (Trim(inText).empty()) {
        return chain;
    }
    for (const auto piece : SplitOutsideQuotes(inText, ';')) {
        if (piece.empty()) {
            chain.mSource.Fail("an effect is empty; write NAME:PARAMETER=VALUE,PARAMETER=VALUE;NAME:...");
        }
        chain.mEffects.push_back(ParseEffect(chain.mSource, piece));
    }
    return chain;
}

} // namespace host
