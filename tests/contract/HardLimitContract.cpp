#include <tessaro/dynamics/HardLimit.h>

#include <memory>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class HardLimitSubject : public ContractSubject
{
public:
    explicit HardLimitSubject(bool inTruePeak) : mLimiter(inTruePeak)
    {
        mLimiter.SetParameter(0, -12.0f);
        mLimiter.SetParameter(6, inTruePeak ? 1.0f : 0.0f);
    }

    void Configure(int inChannels, int inRate, int) override
    {
        mLimiter.SetChannels(static_cast<std::size_t>(inChannels));
        mLimiter.SetSampleRate(inRate);
        mLimiter.Resume();
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        mLimiter.Process(inInput, outOutput, inNumSamples);
    }
    void Reset() override { mLimiter.Resume(); }
    [[nodiscard]] int Latency() const override { return mLimiter.GetLatency(); }

private:
    HardLimit mLimiter;
};

TEST(HardLimitContract, KeepsAllPromises)
{
    for (const bool isTruePeak : {false, true}) {
        SCOPED_TRACE(isTruePeak);
        ContractTerms terms;
        terms.mCreate = [isTruePeak] { return std::make_unique<HardLimitSubject>(isTruePeak); };
        terms.mHasSilenceFlags = false;                       // its mask skips channels
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
