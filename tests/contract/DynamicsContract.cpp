#include <tessaro/dynamics/AutoGateDSP.h>
#include <tessaro/dynamics/DynamicsBand.h>
#include <tessaro/dynamics/SingleBandCompressorDSP.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

using dynamics::AutoGateDSP;
using dynamics::DynamicsBand;
using dynamics::SingleBandCompressorDSP;

using Layout = std::vector<kestrin::AudioChannelDescription>;

/// A processor as three calls.
struct Calls
{
    std::function<void(unsigned inCount, const float* const* inInput, float* const* outOutput)> mProcess;
    std::function<void()> mReset;
    int mLatency;
};
using Create = std::function<Calls(float inRate, const Layout& inLayout, int inMaxBlock)>;

class CallsSubject : public ContractSubject
{
public:
    explicit CallsSubject(Create inCreate) : mCreate(std::move(inCreate)) {}

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        const auto channels = static_cast<unsigned>(inChannels);
        mCalls = mCreate(static_cast<float>(inRate),
                         kestrin::AudioChannelDescription::CreateDiscreteChannelLayout(channels), inMaxBlock);
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags) override
    {
        mCalls.mProcess(static_cast<unsigned>(inNumSamples), inInput, outOutput);
    }
    void Reset() override { mCalls.mReset(); }
    [[nodiscard]] int Latency() const override { return mCalls.mLatency; }

private:
    Create mCreate;
    Calls mCalls;
};

/// The masks of these processors skip channels and say nothing of silence, so that none is handed over.
ContractTerms TermsOf(const Create& inCreate)
{
    ContractTerms terms;
    terms.mCreate = [=] { return std::make_unique<CallsSubject>(inCreate); };
    terms.mHasSilenceFlags = false;
    return terms;
}

/// All stages at work on noise of -6 dB
ContractTerms BandTerms(bool inHasRMS, bool inIsSmoothed, bool inHasMakeup)
{
    return TermsOf([=](float inRate, const Layout& inLayout, int inMaxBlock) -> Calls {
        auto band = std::make_shared<DynamicsBand>(inRate, inLayout, inMaxBlock);
        band->SetCompThreshold(-20.0f);
        band->SetCompRatio(3.0f);
        band->SetLimThreshold(-10.0f);
        band->SetLimRatio(20.0f);
        band->SetGateThreshold(-14.0f);
        band->SetGateRatio(2.0f);
        band->SetGateRelease(5.0f);
        band->SetRMSDetection(inHasRMS);
        band->SetAutoSmoothing(inIsSmoothed);
        band->SetAutoMakeupGain(inHasMakeup);
        band->SetGainReductionEnabled(inIsSmoothed);
        return {[=](auto n, auto in, auto out) { band->Process(n, in, out, {}); }, [=] { band->Reset(); },
                band->GetSystemDelay()};
    });
}

TEST(DynamicsContract, BandKeepsAllPromises)
{
    ExpectKeepsContract(BandTerms(true, true, false));
    ExpectKeepsContract(BandTerms(false, false, false));
    auto terms = BandTerms(true, true, true);
    terms.mExceptions = {{Promise::kReset, "the make-up's sum outlives it"},
                         {Promise::kPoison, "what was summed up before the poison outlives it"}};
    ExpectKeepsContract(terms);
}

TEST(DynamicsContract, CompressorKeepsAllPromises)
{
    for (const bool hasMakeup : {false, true}) {
        auto terms = TermsOf([=](float inRate, const Layout& inLayout, int) -> Calls {
            auto compressor = std::make_shared<SingleBandCompressorDSP>(inRate, inLayout);
            compressor->SetThreshold(-12.0f);
            compressor->SetRatio(4.0f);
            compressor->SetAttack(0.5f);
            compressor->SetRelease(3.0f);
            compressor->SetAutoMakeupGain(hasMakeup);
            return {[=](auto n, auto in, auto out) { compressor->Process(in, out, n, {}); },
                    [=] { compressor->Reset(); }, compressor->GetLatency()};
        });
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
        ExpectKeepsContract(terms);
    }
}

/// The first block is one of a silent sample, so that the gate starts closed however the stream is split.
void StartClosed(AutoGateDSP& ioGate, std::size_t inChannels)
{
    ioGate.Reset();
    float silence = 0.0f;
    const std::vector<float*> rows(inChannels, &silence);
    ioGate.Process(1, rows.data(), rows.data(), {});
}

TEST(DynamicsContract, GateKeepsAllPromises)
{
    for (const unsigned mode : {0u, 1u, 2u, 3u}) {
        SCOPED_TRACE(mode);
        const bool isBlockMode = (mode & 1) != 0;
        auto terms = TermsOf([=](float inRate, const Layout& inLayout, int inMaxBlock) -> Calls {
            auto gate = std::make_shared<AutoGateDSP>(inRate, inLayout, inMaxBlock, isBlockMode);
            gate->SetThreshold(-8.0f);
            gate->SetRatio(3.0f);
            gate->SetAttack(0.3f);
            gate->SetRelease(2.0f);
            gate->SetHold(0.2f);
            gate->SetRMSDetection((mode & 2) != 0);
            gate->EnableGainReductionMeasurement(true);
            StartClosed(*gate, inLayout.size());
            return {[=](auto n, auto in, auto out) { gate->Process(n, in, out, {}); },
                    [gate, channels = inLayout.size()] { StartClosed(*gate, channels); }, gate->GetLatency()};
        });
        if (isBlockMode) {
            terms.mExceptions = {{Promise::kSplits, "one target for each block"}};
        }
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
