#include <tessaro/eq/Parametric.h>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

/// An equalizer for each channel, since it filters blocks of its first one only.
class ParametricSubject : public ContractSubject
{
public:
    void Configure(int inChannels, int inRate, int) override
    {
        parametric::Parametric equalizer;
        equalizer.SetSampleRate(inRate);
        for (const auto& [index, value] : {std::pair{0, 300.0f},
                                           {1, 4.0f},
                                           {3, -3.0f},
                                           {14, 6.0f},
                                           {13, 0.7f},
                                           {26, 1.0f},
                                           {37, 1.0f},
                                           {38, 60.0f}}) {
            equalizer.SetParameter(index, value);
        }
        mEqualizers.assign(static_cast<std::size_t>(inChannels), equalizer);
        Reset();
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        for (std::size_t channel = 0; channel < mEqualizers.size(); ++channel) {
            mEqualizers[channel].Process(inInput[channel], outOutput[channel], inNumSamples);
        }
    }
    void Reset() override
    {
        for (auto& equalizer : mEqualizers) {
            equalizer.Resume();
        }
    }
    [[nodiscard]] int Latency() const override { return mEqualizers[0].GetLatency(); }

private:
    std::vector<parametric::Parametric> mEqualizers;
};

TEST(ParametricContract, KeepsAllPromises)
{
    ContractTerms terms;
    terms.mCreate = [] { return std::make_unique<ParametricSubject>(); };
    terms.mHasSilenceFlags = false;
    terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
    terms.mLatencyTolerance = 1;                          // of the filters' own phase
    ExpectKeepsContract(terms);
}

} // namespace

} // namespace tessaro::contract
