#include "contract/Contract.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace tessaro::contract {

namespace {

enum class Fault
{
    kNone,
    kFadesAtBlockStart,
    kClearsOnEmptyBlock,
    kWritesBehindTheBlock,
    kLeavesOutChannels,
    kReadsSilence,
    kStandsStillInSilence,
    kResetsHalf,
    kResetsByMultiplying,
    kReportsTooLittle,
    kAllocates,
    kClearsOutputFirst,
    kWritesToInput,
    kDividesByLevel,
    kCutsLongBlocks,
    kForgetsWhenItGrows,
};

/// A short delay and a smoother, correct but for one fault.
class FaultySubject : public ContractSubject
{
public:
    explicit FaultySubject(Fault inFault) : mFault(inFault) {}

    void Configure(int inChannels, int, int inMaxBlock) override
    {
        mChannels.assign(static_cast<std::size_t>(inChannels), Channel());
        mMaxBlock = inMaxBlock;
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags inSilent) override
    {
        const auto count = static_cast<std::size_t>(inNumSamples);
        MisbehaveBefore(inInput, outOutput, count);
        const auto done = Has(Fault::kCutsLongBlocks) ? std::min<std::size_t>(count, mMaxBlock) : count;
        for (std::size_t c = 0; c < mChannels.size() && (c < 6 || !Has(Fault::kLeavesOutChannels)); ++c) {
            const bool silent = inSilent.GetBit(c) && !Has(Fault::kReadsSilence);
            if (silent && Has(Fault::kStandsStillInSilence)) {
                std::fill_n(outOutput[c], count, 0.0f);
                continue;
            }
            for (std::size_t i = 0; i < done; ++i) {
                outOutput[c][i] = Step(mChannels[c], silent ? 0.0f : inInput[c][i]);
            }
            if (Has(Fault::kWritesBehindTheBlock)) {
                outOutput[c][count] = 0.0f;
            }
        }
    }
    void Reset() override
    {
        for (auto& channel : mChannels) {
            if (Has(Fault::kResetsByMultiplying)) {
                channel.mSmoothed *= 0.0f;
                std::for_each(channel.mDelay.begin(), channel.mDelay.end(), [](float& s) { s *= 0.0f; });
            } else {
                channel.mSmoothed = Has(Fault::kResetsHalf) ? channel.mSmoothed : 0.0f;
                channel.mDelay.fill(0.0f);
            }
        }
    }
    [[nodiscard]] int Latency() const override { return Has(Fault::kReportsTooLittle) ? 4 : 5; }

private:
    struct Channel
    {
        std::array<float, 5> mDelay{};
        float mSmoothed = 0.0f;
    };

    [[nodiscard]] bool Has(Fault inFault) const { return mFault == inFault; }

    float Step(Channel& ioChannel, float inSample) const
    {
        auto& delay = ioChannel.mDelay;
        ioChannel.mSmoothed += 0.7f * (delay[0] - ioChannel.mSmoothed);
        std::copy(delay.begin() + 1, delay.end(), delay.begin());
        delay.back() = inSample;
        const float level = std::abs(ioChannel.mSmoothed);
        return Has(Fault::kDividesByLevel) ? ioChannel.mSmoothed / level * level : ioChannel.mSmoothed;
    }

    void MisbehaveBefore(const float* const* inInput, float* const* outOutput, std::size_t inCount)
    {
        if (Has(Fault::kAllocates) && inCount != 0) {
            mScratch = std::vector<float>(inCount);
        }
        if ((Has(Fault::kClearsOnEmptyBlock) && inCount == 0) ||
            (Has(Fault::kForgetsWhenItGrows) && inCount > mMaxBlock)) {
            Reset();
            mMaxBlock = std::max(mMaxBlock, inCount);
        }
        for (std::size_t c = 0; c < mChannels.size(); ++c) {
            if (Has(Fault::kFadesAtBlockStart)) {
                mChannels[c].mSmoothed *= 0.9f;
            }
            if (Has(Fault::kClearsOutputFirst)) {
                std::fill_n(outOutput[c], inCount, 0.0f);
            }
            if (Has(Fault::kWritesToInput) && inCount != 0) {
                const_cast<float*>(inInput[c])[0] = 0.25f;
            }
        }
    }

    Fault mFault;
    std::vector<Channel> mChannels;
    std::size_t mMaxBlock = 0;
    std::vector<float> mScratch;
};

ContractTerms TermsOf(Fault inFault)
{
    ContractTerms terms;
    terms.mCreate = [inFault] { return std::make_unique<FaultySubject>(inFault); };
    terms.mGrowth = ContractTerms::Growth::kKeepsHistory;
    terms.mTrapReadsOfSilence = false;
    return terms;
}

TEST(ContractTest, FindsEachBrokenPromise)
{
    const std::vector<std::pair<Fault, Promise>> faults = {
        {Fault::kFadesAtBlockStart, Promise::kSplits},
        {Fault::kClearsOnEmptyBlock, Promise::kSplits},
        {Fault::kWritesBehindTheBlock, Promise::kSplits},
        {Fault::kLeavesOutChannels, Promise::kSplits},
        {Fault::kReadsSilence, Promise::kSilence},
        {Fault::kStandsStillInSilence, Promise::kSilence},
        {Fault::kResetsHalf, Promise::kReset},
        {Fault::kResetsByMultiplying, Promise::kPoison},
        {Fault::kReportsTooLittle, Promise::kLatency},
        {Fault::kAllocates, Promise::kNoAllocation},
        {Fault::kClearsOutputFirst, Promise::kInPlace},
        {Fault::kWritesToInput, Promise::kInPlace},
        {Fault::kDividesByLevel, Promise::kFinite},
        {Fault::kCutsLongBlocks, Promise::kGrowth},
        {Fault::kForgetsWhenItGrows, Promise::kGrowth},
    };
    for (const auto& [fault, promise] : faults) {
        EXPECT_NE(CheckPromise(TermsOf(fault), promise), "")
            << NameOf(promise) << ", fault " << static_cast<int>(fault);
    }
}

TEST(ContractTest, PassesWhatKeepsAllPromises)
{
    for (const auto rows :
         {ContractTerms::Rows::kAny, ContractTerms::Rows::kInPlaceOnly, ContractTerms::Rows::kSeparateOnly}) {
        auto terms = TermsOf(Fault::kNone);
        terms.mRows = rows;
        ExpectKeepsContract(terms);
    }
}

TEST(ContractTest, GoesByTheTerms)
{
    auto terms = TermsOf(Fault::kFadesAtBlockStart);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(CheckPromise(terms, Promise::kSplits), ""),
                            "in blocks of 1: channel 0");
    terms.mSplitTolerance = 1.0f;
    EXPECT_EQ(CheckPromise(terms, Promise::kSplits), "");

    terms = TermsOf(Fault::kForgetsWhenItGrows);
    terms.mGrowth = ContractTerms::Growth::kRestarts;
    EXPECT_EQ(CheckPromise(terms, Promise::kGrowth), "");

    terms = TermsOf(Fault::kReportsTooLittle);
    EXPECT_NONFATAL_FAILURE(ExpectKeepsContract(TermsOf(Fault::kReportsTooLittle)),
                            "5 samples, 4 are reported");
    terms.mExceptions[Promise::kLatency] = "the smoother's delay counts as none";
    ExpectKeepsContract(terms);
    terms.mLatencyTolerance = 1;
    EXPECT_EQ(CheckPromise(terms, Promise::kLatency), "");
}

} // namespace

} // namespace tessaro::contract
