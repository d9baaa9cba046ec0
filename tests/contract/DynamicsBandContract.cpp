#include <tessaro/dynamics/DynamicsBand.h>

#include <functional>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

using dynamics::DynamicsBand;
using SetUp = std::function<void(DynamicsBand&)>;

class DynamicsBandSubject : public ContractSubject
{
public:
    explicit DynamicsBandSubject(SetUp inSetUp) : mSetUp(std::move(inSetUp)) {}

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mBand = std::make_unique<DynamicsBand>(
            static_cast<float>(inRate),
            kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(static_cast<unsigned>(inChannels)),
            inMaxBlock);
        mSetUp(*mBand);
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        mBand->Process(static_cast<unsigned>(inNumSamples), inInput, outOutput, {});
    }
    void Reset() override { mBand->Reset(); }
    [[nodiscard]] int Latency() const override { return mBand->GetSystemDelay(); }

private:
    SetUp mSetUp;
    std::unique_ptr<DynamicsBand> mBand;
};

ContractTerms TermsOf(const SetUp& inSetUp)
{
    ContractTerms terms;
    terms.mCreate = [inSetUp] { return std::make_unique<DynamicsBandSubject>(inSetUp); };
    terms.mHasSilenceFlags = false; // the mask of skipped channels is not one of silent ones
    return terms;
}

/// All three at work on noise of -6 dB
void SetAllStages(DynamicsBand& ioBand)
{
    ioBand.SetCompThreshold(-20.0f);
    ioBand.SetCompRatio(3.0f);
    ioBand.SetLimThreshold(-10.0f);
    ioBand.SetLimRatio(20.0f);
    ioBand.SetGateThreshold(-14.0f);
    ioBand.SetGateRatio(2.0f);
    ioBand.SetGateRelease(5.0f);
    ioBand.SetGainReductionEnabled(true);
}

TEST(DynamicsBandContract, KeepsAllPromises)
{
    ExpectKeepsContract(TermsOf([](DynamicsBand&) {}));
    ExpectKeepsContract(TermsOf(SetAllStages));
    ExpectKeepsContract(TermsOf([](DynamicsBand& ioBand) {
        SetAllStages(ioBand);
        ioBand.SetRMSDetection(false);
        ioBand.SetAutoSmoothing(false);
        ioBand.SetGainReductionEnabled(false);
    }));
}

TEST(DynamicsBandContract, KeepsAllPromisesWithMakeupButThoseOfReset)
{
    auto terms = TermsOf([](DynamicsBand& ioBand) {
        SetAllStages(ioBand);
        ioBand.SetAutoMakeupGain(true);
    });
    terms.mExceptions = {{Promise::kReset, "the make-up's sum outlives it"},
                         {Promise::kPoison, "what was summed up before the poison outlives it"}};
    ExpectKeepsContract(terms);
}

} // namespace

} // namespace tessaro::contract
