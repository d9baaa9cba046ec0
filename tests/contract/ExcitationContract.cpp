#include <tessaro/restoration/prediction/Excitation.h>

#include <memory>

#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace tessaro::contract {

namespace {

class ExcitationSubject : public ContractSubject
{
public:
    void Configure(int inChannels, int inRate, int) override
    {
        mNumChannels = inChannels;
        mExcitation.StartNewStream(static_cast<unsigned>(inChannels), static_cast<float>(inRate), 5);
        mExcitation.SetMode(0.02f, 12, 0.007f);
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags inSilent) override
    {
        unsigned silent = 0;
        for (int channel = 0; channel < mNumChannels; ++channel) {
            silent |= inSilent.GetBitModulo(static_cast<std::size_t>(channel)) ? 1u << channel : 0u;
        }
        mExcitation.Process(inInput, static_cast<unsigned>(inNumSamples), outOutput, nullptr, nullptr,
                            nullptr, 0, 0, silent);
    }
    void Reset() override { mExcitation.Reset(); }
    [[nodiscard]] int Latency() const override { return static_cast<int>(mExcitation.GetLatency()); }

private:
    int mNumChannels = 0;
    Excitation mExcitation;
};

TEST(ExcitationContract, KeepsAllPromises)
{
    ContractTerms terms;
    terms.mCreate = [] { return std::make_unique<ExcitationSubject>(); };
    terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
    terms.mStreamLength = 12000;
    terms.mExceptions = {{Promise::kLatency, "magnitudes do not correlate with noise"}};
    ExpectKeepsContract(terms);
}

} // namespace

} // namespace tessaro::contract
