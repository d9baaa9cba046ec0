#include <tessaro/dynamics/MaximizerDSP.h>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class MaximizerSubject : public ContractSubject
{
public:
    explicit MaximizerSubject(unsigned inMode) : mMode(static_cast<MaximizerDSP::Mode>(inMode)) {}

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mMaximizer.reset(new MaximizerDSP(inMaxBlock, static_cast<float>(inRate), inChannels, true));
        mMaximizer->SetMode(mMode);
        mMaximizer->SetThreshold(-12.0f);
        mMaximizer->SetRelease(20.0f);
        mMaximizer->SetMeterVisible(true);
    }
    void Process(const float* const*, float* const* outOutput, int inNumSamples, SilenceFlags) override
    {
        mMaximizer->Process(static_cast<unsigned>(inNumSamples), outOutput, {});
    }
    void Reset() override { mMaximizer->Reset(); }
    [[nodiscard]] int Latency() const override { return static_cast<int>(mMaximizer->GetSystemDelay()); }

private:
    MaximizerDSP::Mode mMode;
    boost::intrusive_ptr<MaximizerDSP> mMaximizer;
};

TEST(MaximizerDSPContract, KeepsAllPromisesInAllModes)
{
    for (const unsigned mode : {0u, 1u, 2u, 3u}) {
        SCOPED_TRACE(mode);
        ContractTerms terms;
        terms.mCreate = [mode] { return std::make_unique<MaximizerSubject>(mode); };
        terms.mHasSilenceFlags = false; // its mask skips channels
        terms.mRows = ContractTerms::Rows::kInPlaceOnly;
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // the maximum bounds nothing
        if (mode >= 2) { // longer delays, of a limiter with a contract of its own
            terms.mStreamLength = 9000;
            terms.mFormats = {{1, 48000}, {2, 44100}, {3, 8000}, {5, 96000}};
        }
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
