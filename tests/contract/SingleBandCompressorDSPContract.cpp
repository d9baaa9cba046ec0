#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include <memory>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class CompressorSubject : public ContractSubject
{
public:
    explicit CompressorSubject(bool inHasMakeup) : mHasMakeup(inHasMakeup) {}

    void Configure(int inChannels, int inRate, int) override
    {
        mCompressor = std::make_unique<dynamics::SingleBandCompressorDSP>(
            static_cast<float>(inRate),
            kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(static_cast<unsigned>(inChannels)));
        mCompressor->SetThreshold(-12.0f);
        mCompressor->SetRatio(4.0f);
        mCompressor->SetAttack(0.5f);
        mCompressor->SetRelease(3.0f);
        mCompressor->SetAutoMakeupGain(mHasMakeup);
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        mCompressor->Process(inInput, outOutput, static_cast<unsigned>(inNumSamples), {});
    }
    void Reset() override { mCompressor->Reset(); }
    [[nodiscard]] int Latency() const override { return mCompressor->GetLatency(); }

private:
    bool mHasMakeup;
    std::unique_ptr<dynamics::SingleBandCompressorDSP> mCompressor;
};

TEST(SingleBandCompressorDSPContract, KeepsAllPromises)
{
    for (const bool hasMakeup : {false, true}) {
        SCOPED_TRACE(hasMakeup);
        ContractTerms terms;
        terms.mCreate = [hasMakeup] { return std::make_unique<CompressorSubject>(hasMakeup); };
        terms.mHasSilenceFlags = false; // the mask of skipped channels is not one of silent ones
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
