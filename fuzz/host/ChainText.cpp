#include <cstdint>
#include <cstdlib>
#include <string>

#include "HostError.h"
#include "chain/ChainDescription.h"
#include "chain/ChainPreset.h"

namespace {

/// An effect with a parameter of each kind, and names of one letter so that random texts meet them.
const host::EffectRegistrar kEffect({
    .mName = "x",
    .mDescription = "",
    .mParameters = {host::NumberParameter("a", "", "dB", -10.0, 1e9, 0.0),
                    host::SwitchParameter("b", "", false),
                    host::ChoiceParameter("c", "", {"x", "y"}),
                    {"y",
                     "",
                     {host::NumberField("a", "", 0.0, host::kHalfTheRate, 1.0),
                      host::IntegerField("b", "", 0, 9, 3)},
                     3},
                    {"z", "", {{"", host::FieldSpec::Kind::kText, "", 0.0, 0.0, "a", {}}}}},
    .mExample = "x",
    .mCreate = nullptr,
});

void AbortUnlessSame(const std::string& inText, const std::string& inOther)
{
    if (inText != inOther) {
        std::abort();
    }
}

} // namespace

/// A chain that is read, from an option or a preset, is written as a text that reads as the same chain.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    const std::string text(reinterpret_cast<const char*>(inData), inSize);
    const auto source = host::ChainSource::File("preset");
    for (const bool isPreset : {false, true}) {
        try {
            const auto chain = isPreset ? host::ParsePreset(source, text) : host::ParseChain("--chain", text);
            const auto option = host::FormatChain(chain);
            const auto preset = host::FormatPreset(chain);
            AbortUnlessSame(host::FormatPreset(host::ParseChain("--chain", option)), preset);
            AbortUnlessSame(host::FormatPreset(host::ParsePreset(source, preset)), preset);
        } catch (const host::HostError&) {
        }
    }
    return 0;
}
