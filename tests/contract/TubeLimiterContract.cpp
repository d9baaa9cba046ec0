#include <tessaro/dynamics/TubeLimiter.h>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class TubeSubject : public ContractSubject
{
public:
    explicit TubeSubject(bool inTruePeak) : mIsTruePeak(inTruePeak) {}

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mLimiter.reset(new TubeLimiter(inMaxBlock, static_cast<float>(inRate), inChannels));
        mLimiter->SetThreshold(-12.0f);
        mLimiter->SetPreventIntersampleClips(mIsTruePeak);
    }
    void Process(const float* const*, float* const* outOutput, int inNumSamples, SilenceFlags) override
    {
        mLimiter->Process(static_cast<unsigned>(inNumSamples), outOutput, outOutput, {});
    }
    void Reset() override { mLimiter->Reset(); }
    [[nodiscard]] int Latency() const override { return mLimiter->GetSystemDelay(); }

private:
    bool mIsTruePeak;
    boost::intrusive_ptr<TubeLimiter> mLimiter;
};

TEST(TubeLimiterContract, KeepsAllPromises)
{
    for (const bool isTruePeak : {false, true}) {
        SCOPED_TRACE(isTruePeak);
        ContractTerms terms;
        terms.mCreate = [isTruePeak] { return std::make_unique<TubeSubject>(isTruePeak); };
        terms.mHasSilenceFlags = false;                  // its mask skips channels
        terms.mRows = ContractTerms::Rows::kInPlaceOnly; // from other rows it lifts the input
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory;
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
