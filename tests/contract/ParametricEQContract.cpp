#include <tessaro/eq/ParametricEQ.h>

#include <memory>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class ParametricEQSubject : public ContractSubject
{
public:
    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mEqualizer = std::make_unique<eq::ParametricEQ>(
            inMaxBlock, static_cast<float>(inRate),
            kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(static_cast<unsigned>(inChannels)));
        mEqualizer->SetBandEnable(0, true);
        mEqualizer->SetGain(1, 6.0f);
        mEqualizer->SetGain(3, -9.0f);
        mEqualizer->SetGain(4, 3.0f);
    }
    void Process(const float* const*, float* const* ioRows, int inNumSamples, SilenceFlags) override
    {
        mEqualizer->ProcessInPlace(static_cast<unsigned>(inNumSamples), ioRows);
    }
    void Reset() override { mEqualizer->Reset(); }
    [[nodiscard]] int Latency() const override { return 0; }

private:
    std::unique_ptr<eq::ParametricEQ> mEqualizer;
};

TEST(ParametricEQContract, KeepsAllPromises)
{
    ContractTerms terms;
    terms.mCreate = [] { return std::make_unique<ParametricEQSubject>(); };
    terms.mHasSilenceFlags = false;
    terms.mRows = ContractTerms::Rows::kInPlaceOnly;
    terms.mSplitTolerance = 1e-6f; // the offset starts anew with each block
    terms.mLatencyTolerance = 1;   // of the filters' own phase
    ExpectKeepsContract(terms);
}

} // namespace

} // namespace tessaro::contract
