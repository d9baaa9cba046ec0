#include <tessaro/utility/DelayLine.h>

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

/// A line for each channel.
class DelayLineSubject : public ContractSubject
{
public:
    explicit DelayLineSubject(unsigned inDelay) : mDelay(inDelay) {}

    void Configure(int inChannels, int inRate, int) override
    {
        for (int channel = 0; channel < inChannels; ++channel) {
            mLines.push_back(std::make_unique<utility::DelayLine>(static_cast<float>(inRate), 100.0f));
            mLines.back()->SetDelaySamples(mDelay);
        }
    }
    void Process(const float* const*, float* const* ioRows, int inNumSamples, SilenceFlags) override
    {
        for (std::size_t channel = 0; channel < mLines.size(); ++channel) {
            mLines[channel]->ProcessInPlace(static_cast<unsigned>(inNumSamples), ioRows[channel]);
        }
    }
    void Reset() override
    {
        for (auto& line : mLines) {
            line->Reset();
        }
    }
    [[nodiscard]] int Latency() const override { return static_cast<int>(mLines[0]->GetDelaySamples()); }

private:
    unsigned mDelay;
    std::vector<std::unique_ptr<utility::DelayLine>> mLines;
};

TEST(DelayLineContract, KeepsAllPromises)
{
    for (const unsigned delay : {0u, 1u, 300u, 800u}) {
        SCOPED_TRACE(delay);
        ContractTerms terms;
        terms.mCreate = [delay] { return std::make_unique<DelayLineSubject>(delay); };
        terms.mHasSilenceFlags = false;
        terms.mRows = ContractTerms::Rows::kInPlaceOnly;
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
