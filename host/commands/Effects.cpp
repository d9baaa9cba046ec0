#include <cstdio>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "Command.h"
#include "HostError.h"
#include "Report.h"
#include "chain/EffectChain.h"

namespace host {

namespace {

constexpr const char* kSyntax =
    "--chain \"NAME:PARAMETER=VALUE,PARAMETER=VALUE;NAME:...\": effects in their "
    "order, separated by ';'.\nA value of several fields is written "
    "FIELD/FIELD/FIELD; fields left empty or out keep their defaults,\nand so do "
    "parameters. Single quotes protect a text that holds , ; : = or /; double a quote within.";
constexpr int kReferenceRate = 48000;

/// `effects [NAME]`: what a chain can be made of.
class EffectsCommand : public Command
{
public:
    void Define(CLI::App& ioApp) override
    {
        ioApp.add_option("NAME", mName, "The effect to explain; without it all are listed");
        ioApp.add_flag("--json", mJson, "Print JSON");
    }

    void Run() override
    {
        if (mName.empty()) {
            mJson ? PrintListForPrograms() : PrintListForPeople();
        } else {
            const EffectSetting setting(ChainSource::Option("NAME"), mName);
            const auto& entry = setting.GetEntry();
            mJson ? PrintJson(ToJson(entry)) : Explain(entry);
        }
        FinishOutput();
    }

private:
    /// Of the effect with its defaults.
    static std::int64_t MeasureLatency(const EffectEntry& inEntry)
    {
        const auto source = ChainSource::Option("NAME");
        const ChainDescription chain{source, {EffectSetting(source, inEntry.mName)}};
        return EffectChain(chain, {1, kReferenceRate, 512}).GetLatency();
    }

    static void PrintListForPeople()
    {
        for (const auto& entry : GetEffects()) {
            std::printf("%-14s %s\n", entry.mName.c_str(), entry.mDescription.c_str());
        }
        std::printf("\n%s\n'tessaro-host effects NAME' explains an effect.\n", kSyntax);
    }

    static void Explain(const EffectEntry& inEntry)
    {
        std::printf("%s: %s\n\n", inEntry.mName.c_str(), inEntry.mDescription.c_str());
        for (const auto& parameter : inEntry.mParameters) {
            std::printf("  %s\n      %s%s\n", DescribeForm(parameter).c_str(), parameter.mDescription.c_str(),
                        parameter.mOffUnlessGiven ? "; off unless given" : "");
            if (parameter.mMostTimes > 1) {
                std::printf("      may be given up to %zu times\n", parameter.mMostTimes);
            }
            for (const auto& field : parameter.mFields) {
                const auto label = field.mName.empty() ? "" : field.mName + ": ";
                std::printf("      %s%s, default %s\n", label.c_str(), DescribeRange(field).c_str(),
                            field.mDefault.c_str());
            }
        }
        std::printf("\n");
        PrintRow("Latency", std::to_string(MeasureLatency(inEntry)) + " samples with the defaults, at " +
                                std::to_string(kReferenceRate) + " Hz");
        for (const auto& note : inEntry.mNotes) {
            PrintRow("Note", note);
        }
        PrintRow("Example", "--chain \"" + inEntry.mExample + "\"");
    }

    static nlohmann::ordered_json ToJson(const FieldSpec& inField)
    {
        static const char* const kKinds[] = {"number", "integer", "switch", "choice", "text"};
        nlohmann::ordered_json json{{"kind", kKinds[static_cast<int>(inField.mKind)]},
                                    {"default", inField.mDefault}};
        if (!inField.mName.empty()) {
            json["name"] = inField.mName;
        }
        if (inField.mKind == FieldSpec::Kind::kNumber || inField.mKind == FieldSpec::Kind::kInteger) {
            FieldValue standard;
            ReadField(inField, "", standard);
            json["default"] = standard.mNumber;
            json["unit"] = inField.mUnit;
            json["low"] = inField.mLow;
            const bool isHalfTheRate = inField.mHigh == kHalfTheRate;
            json["high"] = isHalfTheRate ? nlohmann::ordered_json("half the sampling rate")
                                         : nlohmann::ordered_json(inField.mHigh);
        } else if (inField.mKind == FieldSpec::Kind::kChoice) {
            json["choices"] = inField.mChoices;
        }
        return json;
    }

    static nlohmann::ordered_json ToJson(const EffectEntry& inEntry)
    {
        auto parameters = nlohmann::ordered_json::array();
        for (const auto& parameter : inEntry.mParameters) {
            auto fields = nlohmann::ordered_json::array();
            for (const auto& field : parameter.mFields) {
                fields.push_back(ToJson(field));
            }
            parameters.push_back({{"name", parameter.mName},
                                  {"description", parameter.mDescription},
                                  {"offUnlessGiven", parameter.mOffUnlessGiven},
                                  {"mostTimes", parameter.mMostTimes},
                                  {"fields", std::move(fields)}});
        }
        return {{"name", inEntry.mName},
                {"description", inEntry.mDescription},
                {"parameters", std::move(parameters)},
                {"notes", inEntry.mNotes},
                {"linear", inEntry.mIsLinear},
                {"latency", {{"samples", MeasureLatency(inEntry)}, {"sampleRate", kReferenceRate}}},
                {"example", inEntry.mExample}};
    }

    static void PrintListForPrograms()
    {
        auto effects = nlohmann::ordered_json::array();
        for (const auto& entry : GetEffects()) {
            effects.push_back(ToJson(entry));
        }
        PrintJson({{"effects", std::move(effects)}});
    }

    std::string mName;
    bool mJson = false;
};

const RegisterCommand<EffectsCommand> kEffects("effects", "List the effects of a chain, or explain one");

} // namespace

} // namespace host
