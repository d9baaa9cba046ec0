#include <tessaro/dynamics/AutoGateDSP.h>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

struct GateSetting
{
    bool mIsBlockMode;
    bool mHasRMS;
};

/// A gate that has seen a first block, of one silent sample, so that it starts closed however the stream is
/// split.
class AutoGateSubject : public ContractSubject
{
public:
    explicit AutoGateSubject(GateSetting inSetting) : mSetting(inSetting) {}

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mChannels = static_cast<std::size_t>(inChannels);
        mGate = std::make_unique<dynamics::AutoGateDSP>(
            static_cast<float>(inRate),
            kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(static_cast<unsigned>(inChannels)),
            inMaxBlock, mSetting.mIsBlockMode);
        mGate->SetThreshold(-8.0f);
        mGate->SetRatio(3.0f);
        mGate->SetAttack(0.3f);
        mGate->SetRelease(2.0f);
        mGate->SetHold(0.2f);
        mGate->SetRMSDetection(mSetting.mHasRMS);
        mGate->EnableGainReductionMeasurement(true);
        HearSilence();
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        mGate->Process(static_cast<unsigned>(inNumSamples), inInput, outOutput, {});
    }
    void Reset() override
    {
        mGate->Reset();
        HearSilence();
    }
    [[nodiscard]] int Latency() const override { return mGate->GetLatency(); }

private:
    void HearSilence()
    {
        if (!mSetting.mIsBlockMode) {
            std::vector<float> silence(mChannels);
            std::vector<float*> rows;
            for (auto& sample : silence) {
                rows.push_back(&sample);
            }
            mGate->Process(1, rows.data(), rows.data(), {});
        }
    }

    GateSetting mSetting;
    std::size_t mChannels = 0;
    std::unique_ptr<dynamics::AutoGateDSP> mGate;
};

TEST(AutoGateDSPContract, KeepsAllPromises)
{
    for (const auto setting : {GateSetting{false, true}, {false, false}, {true, true}, {true, false}}) {
        SCOPED_TRACE(::testing::Message() << setting.mIsBlockMode << setting.mHasRMS);
        ContractTerms terms;
        terms.mCreate = [setting] { return std::make_unique<AutoGateSubject>(setting); };
        terms.mHasSilenceFlags = false; // the mask of skipped channels is not one of silent ones
        if (setting.mIsBlockMode) {
            terms.mExceptions = {{Promise::kSplits, "one target for each block"}};
        }
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
