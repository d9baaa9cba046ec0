#include "contract/Checks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <sstream>

#include "contract/Driver.h"
#include "support/Measures.h"

namespace tessaro::contract {

namespace {

constexpr std::uint32_t kSeed = 1;
constexpr std::uint32_t kOtherSeed = 100;

bool Differ(float inA, float inB, float inTolerance)
{
    return !(std::abs(inA - inB) <= inTolerance) && inA != inB;
}

/// The first sample in which two outputs differ, as text; empty if there is none.
std::string FirstDifference(const PlanarRows& inExpected, const PlanarRows& inActual, float inTolerance)
{
    for (std::size_t channel = 0; channel < inExpected.GetChannelCount(); ++channel) {
        for (std::size_t i = 0; i < inExpected.GetLength(); ++i) {
            const float expected = inExpected[channel][i];
            const float actual = inActual[channel][i];
            if (Differ(expected, actual, inTolerance)) {
                std::ostringstream text;
                text.precision(9);
                text << "channel " << channel << ", sample " << i << " is " << actual << " instead of "
                     << expected;
                return text.str();
            }
        }
    }
    return {};
}

std::string In(ContractFormat inFormat, const std::string& inWhat)
{
    return std::to_string(inFormat.mChannels) + " channels at " + std::to_string(inFormat.mRate) +
           " Hz: " + inWhat;
}

std::string InBlocksOf(const std::vector<int>& inBlocks)
{
    std::string text = "in blocks of";
    for (const int block : inBlocks) {
        text += " " + std::to_string(block);
    }
    return text + ": ";
}

PlanarRows NoiseOf(const ContractTerms& inTerms, ContractFormat inFormat, std::uint32_t inSeed)
{
    return PlanarRows::OfNoise(static_cast<std::size_t>(inFormat.mChannels), inTerms.mStreamLength, inSeed,
                               inTerms.mLevel);
}

Drive DriveIn(const ContractTerms& inTerms, std::vector<int> inBlocks)
{
    return {std::move(inBlocks), inTerms.mRows == ContractTerms::Rows::kInPlaceOnly};
}

std::vector<std::vector<int>> BlockPatterns(int inMaxBlock)
{
    return {{1}, {inMaxBlock - 1, 2}, {0, 1, 3, 7, 0, 0, inMaxBlock, 13, 64, inMaxBlock / 2 + 1, 2}};
}

/// Runs a check in each format, up to the first failure.
template <typename Function>
std::string ForEachFormat(const std::vector<ContractFormat>& inFormats, Function inCheck)
{
    for (const auto format : inFormats) {
        const std::string broken = inCheck(format);
        if (!broken.empty()) {
            return In(format, broken);
        }
    }
    return {};
}

/// The first and the last two formats, for what hardly hangs on the format
template <typename Function>
std::string ForSomeFormats(const ContractTerms& inTerms, Function inCheck)
{
    const auto& all = inTerms.mFormats;
    const auto last = all.end() - static_cast<std::ptrdiff_t>(std::min<std::size_t>(all.size() - 1, 2));
    std::vector<ContractFormat> some(last, all.end());
    some.insert(some.begin(), all.front());
    return ForEachFormat(some, inCheck);
}

/// Each sample of the block is written, and none behind it.
std::string CheckBounds(const DriveResult& inResult)
{
    const auto length = inResult.mOutput.GetLength() - kGuardSamples;
    for (std::size_t channel = 0; channel < inResult.mOutput.GetChannelCount(); ++channel) {
        const auto& row = inResult.mOutput[channel];
        const auto end = row.begin() + static_cast<std::ptrdiff_t>(length);
        if (std::find(row.begin(), end, kUnwritten) != end) {
            return "channel " + std::to_string(channel) + " is not written everywhere";
        }
        if (std::any_of(end, row.end(), [](float inSample) { return inSample != kUnwritten; })) {
            return "channel " + std::to_string(channel) + " is written behind the block";
        }
    }
    return {};
}

} // namespace

std::string CheckSplits(const ContractTerms& inTerms)
{
    return ForEachFormat(inTerms.mFormats, [&](ContractFormat inFormat) -> std::string {
        const auto input = NoiseOf(inTerms, inFormat, kSeed);
        const auto whole =
            Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, DriveIn(inTerms, {inTerms.mMaxBlock}));
        if (const auto broken = CheckBounds(whole); !broken.empty()) {
            return broken;
        }
        for (const auto& blocks : BlockPatterns(inTerms.mMaxBlock)) {
            const auto split =
                Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, DriveIn(inTerms, blocks));
            const auto difference = FirstDifference(whole.mOutput, split.mOutput, inTerms.mSplitTolerance);
            if (!difference.empty()) {
                return InBlocksOf(blocks) + difference;
            }
        }
        return {};
    });
}

namespace {

/// All channels sound, some or all are silent, for long enough that some delays run empty.
std::vector<SilenceFlags> SilencePlan()
{
    return {0, 0x55, 0, 0xAA, 0xFF, 0xFF, 0x0F, ~std::uint64_t{0}};
}

} // namespace

std::string CheckSilence(const ContractTerms& inTerms)
{
    if (!inTerms.mHasSilenceFlags) {
        return {};
    }
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        const auto plan = SilencePlan();
        auto input = PlanarRows::OfNoise(static_cast<std::size_t>(inFormat.mChannels),
                                         kSilenceStretch * (plan.size() + 2), kSeed, inTerms.mLevel);
        for (std::size_t channel = 0; channel < input.GetChannelCount(); ++channel) {
            for (std::size_t i = 0; i < input.GetLength(); ++i) {
                input[channel][i] = SilenceAt(plan, i).GetBit(channel) ? 0.0f : input[channel][i];
            }
        }
        auto drive = DriveIn(inTerms, {inTerms.mMaxBlock, 3, 100});
        drive.mSilence = plan;
        drive.mFlagSilence = false;
        const auto zeros = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive);
        drive.mFlagSilence = true;
        const auto flagged = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive);
        return FirstDifference(zeros.mOutput, flagged.mOutput, inTerms.mSilenceTolerance);
    });
}

namespace {

/// Whether a stream comes out of a used processor after `Reset` as it does out of a fresh one.
std::string CompareWithFresh(const ContractTerms& inTerms, ContractFormat inFormat, const PlanarRows& inUse)
{
    const auto drive = DriveIn(inTerms, {inTerms.mMaxBlock});
    const auto input = NoiseOf(inTerms, inFormat, kSeed);
    const auto fresh = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive);
    Driver used(inTerms, inFormat, inTerms.mMaxBlock);
    (void)used.Run(inUse, DriveIn(inTerms, {inTerms.mMaxBlock, 31}));
    used.Reset();
    return FirstDifference(fresh.mOutput, used.Run(input, drive).mOutput, 0.0f);
}

} // namespace

std::string CheckReset(const ContractTerms& inTerms)
{
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) {
        return CompareWithFresh(inTerms, inFormat, NoiseOf(inTerms, inFormat, kOtherSeed));
    });
}

std::string CheckPoison(const ContractTerms& inTerms)
{
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        for (const float poison :
             {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
            auto use = NoiseOf(inTerms, inFormat, kOtherSeed);
            for (std::size_t channel = 0; channel < use.GetChannelCount(); ++channel) {
                use[channel][use.GetLength() / 3] = poison;
                use[channel][use.GetLength() - 1] = poison;
            }
            const auto difference = CompareWithFresh(inTerms, inFormat, use);
            if (!difference.empty()) {
                return std::to_string(poison) + " in the input: " + difference;
            }
        }
        return {};
    });
}

std::string CheckLatency(const ContractTerms& inTerms)
{
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        Driver driver(inTerms, inFormat, inTerms.mMaxBlock);
        const int reported = driver.Latency();
        if (reported < 0) {
            return "a latency of " + std::to_string(reported) + " is reported";
        }
        const auto longest = static_cast<std::size_t>(reported + std::max(64, reported / 2));
        const auto input = PlanarRows::OfNoise(static_cast<std::size_t>(inFormat.mChannels), longest + 3000,
                                               kSeed, inTerms.mLevel);
        const auto output = driver.Run(input, DriveIn(inTerms, {inTerms.mMaxBlock})).mOutput;
        for (const std::size_t channel : {std::size_t{0}, input.GetChannelCount() - 1}) {
            const auto measured =
                static_cast<int>(testing::DelayInSamples(input[channel], output[channel], longest));
            if (std::abs(measured - reported) > inTerms.mLatencyTolerance) {
                return "channel " + std::to_string(channel) + " is late by " + std::to_string(measured) +
                       " samples, " + std::to_string(reported) + " are reported";
            }
        }
        return {};
    });
}

std::string CheckNoAllocation(const ContractTerms& inTerms)
{
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        auto drive = DriveIn(inTerms, {0, 1, inTerms.mMaxBlock, 7, inTerms.mMaxBlock / 2});
        auto input = NoiseOf(inTerms, inFormat, kSeed);
        if (inTerms.mHasSilenceFlags) {
            drive.mSilence = SilencePlan();
        }
        const auto count = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive).mAllocations;
        return count == 0 ? std::string() : std::to_string(count) + " allocations and frees";
    });
}

std::string CheckInPlace(const ContractTerms& inTerms)
{
    if (inTerms.mRows != ContractTerms::Rows::kAny) {
        return {};
    }
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        const auto input = NoiseOf(inTerms, inFormat, kSeed);
        Drive drive{{inTerms.mMaxBlock, 1, 30}};
        const auto separate = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive);
        if (separate.mChangedInput) {
            return "the input rows are written to";
        }
        drive.mInPlace = true;
        const auto inPlace = Driver(inTerms, inFormat, inTerms.mMaxBlock).Run(input, drive);
        return FirstDifference(separate.mOutput, inPlace.mOutput, 0.0f);
    });
}

std::string CheckFinite(const ContractTerms& inTerms)
{
    return ForEachFormat(inTerms.mFormats, [&](ContractFormat inFormat) -> std::string {
        Driver driver(inTerms, inFormat, inTerms.mMaxBlock);
        const auto noise = NoiseOf(inTerms, inFormat, kSeed);
        const PlanarRows zeros(noise.GetChannelCount(), noise.GetLength());
        const auto drive = DriveIn(inTerms, {inTerms.mMaxBlock});
        auto silent = drive;
        silent.mSilence = {SilenceFlags::All()};
        silent.mFlagSilence = inTerms.mHasSilenceFlags;

        const auto isFinite = [&](const PlanarRows& inInput, const Drive& inDrive) {
            const auto output = driver.Run(inInput, inDrive).mOutput;
            bool finite = true;
            for (std::size_t channel = 0; channel < output.GetChannelCount(); ++channel) {
                finite = finite && testing::AreAllFinite(output[channel]);
            }
            return finite;
        };
        const std::array<std::pair<const PlanarRows*, const char*>, 4> stages = {
            {{&zeros, "zeros at the start"},
             {&noise, "noise"},
             {&zeros, "silence"},
             {&noise, "noise after silence"}}};
        for (const auto& [rows, name] : stages) {
            if (!isFinite(*rows, name == std::string("silence") ? silent : drive)) {
                return std::string("a sample is not finite: ") + name;
            }
        }
        return {};
    });
}

std::string CheckGrowth(const ContractTerms& inTerms)
{
    using Growth = ContractTerms::Growth;
    if (inTerms.mGrowth == Growth::kNone) {
        return {};
    }
    const int large = inTerms.mMaxBlock;
    const int small = std::max(large / 4, 1);
    return ForSomeFormats(inTerms, [&](ContractFormat inFormat) -> std::string {
        const auto input = NoiseOf(inTerms, inFormat, kSeed);
        const auto expected = Driver(inTerms, inFormat, large).Run(input, DriveIn(inTerms, {large})).mOutput;
        std::vector<std::vector<int>> patterns = {{large, small}};
        if (inTerms.mGrowth == Growth::kKeepsHistory) {
            patterns.push_back({small, small, small + 1, small, large});
        }
        for (const auto& blocks : patterns) {
            const auto grown = Driver(inTerms, inFormat, small).Run(input, DriveIn(inTerms, blocks)).mOutput;
            const auto difference = FirstDifference(expected, grown, inTerms.mSplitTolerance);
            if (!difference.empty()) {
                return InBlocksOf(blocks) + "from a maximum of " + std::to_string(small) + ": " + difference;
            }
        }
        return {};
    });
}

} // namespace tessaro::contract
