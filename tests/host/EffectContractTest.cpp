#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "chain/ChainDescription.h"
#include "contract/Contract.h"

namespace host {
namespace {

using tessaro::contract::ContractTerms;
using tessaro::contract::Promise;

class EffectSubject : public tessaro::contract::ContractSubject
{
public:
    explicit EffectSubject(const std::string& inChain)
        : mSetting(ParseChain("--chain", inChain).mEffects.at(0)), mEffect(mSetting.GetEntry().mCreate())
    {
        mEffect->SetParameters(mSetting.GetValues());
    }

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mChannelCount = static_cast<std::size_t>(inChannels);
        mEffect->Configure({inChannels, inRate, inMaxBlock});
    }

    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilentChannels inSilent) override
    {
        const auto silent =
            mEffect->Process(inInput, outOutput, static_cast<unsigned>(inNumSamples), inSilent);
        for (std::size_t channel = 0; channel < mChannelCount; ++channel) {
            if (silent.GetBitModulo(channel)) {
                std::fill_n(outOutput[channel], inNumSamples, 0.0f);
            }
        }
    }

    void Reset() override { mEffect->Reset(); }
    int Latency() const override { return static_cast<int>(mEffect->GetLatency()); }

private:
    EffectSetting mSetting;
    std::unique_ptr<Effect> mEffect;
    std::size_t mChannelCount = 0;
};

/// Promises that an effect has to break, by the effect's name.
const std::map<std::string, std::map<Promise, std::string>> kExceptions = {
    {"butterworth", {{Promise::kLatency, "the group delay of a narrow band is no latency"}}},
    {"delay", {{Promise::kLatency, "its delay is what it is for, and reported on demand only"}}},
};

/// What is driven instead of the example, where that takes long.
const std::map<std::string, std::string> kChains = {
    {"fir", "fir:node=bell/1000/-6/2,node=highpass/80,size=256"},
    {"firband", "firband:low=1000,high=3400,order=200"},
};

void ExpectKeepsContract(const std::string& inChain, const std::map<Promise, std::string>& inExceptions)
{
    SCOPED_TRACE(inChain);
    ContractTerms terms;
    terms.mCreate = [inChain] { return std::make_unique<EffectSubject>(inChain); };
    terms.mRows = ContractTerms::Rows::kSeparateOnly;
    terms.mFormats = {{1, 48000}, {2, 44100}, {5, 192000}}; // that the examples fit
    terms.mSplitTolerance = 1e-6f;                          // sums may be taken in another order
    terms.mSilenceTolerance = 1e-6f;
    terms.mExceptions = inExceptions;
    tessaro::contract::ExpectKeepsContract(terms);
}

TEST(EffectContractTest, EveryEffectKeepsWhatProcessorsPromise)
{
    for (const auto& entry : GetEffects()) {
        const auto exceptions = kExceptions.find(entry.mName);
        const auto chain = kChains.find(entry.mName);
        ExpectKeepsContract(chain == kChains.end() ? entry.mExample : chain->second,
                            exceptions == kExceptions.end() ? std::map<Promise, std::string>()
                                                            : exceptions->second);
    }
    ExpectKeepsContract("delay:time=3,compensated=on", {});
    ExpectKeepsContract("gain:gain=-400", {});
}

} // namespace
} // namespace host
