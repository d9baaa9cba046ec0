#include "contract/Driver.h"

#include <algorithm>
#include <limits>

#include "support/AllocationGuard.h"

namespace tessaro::contract {

SilenceFlags SilenceAt(const std::vector<SilenceFlags>& inSilence, std::size_t inSample)
{
    return inSilence.empty() ? SilenceFlags() : inSilence[inSample / kSilenceStretch % inSilence.size()];
}

Driver::Driver(const ContractTerms& inTerms, ContractFormat inFormat, int inMaxBlock)
    : mSubject(inTerms.mCreate()),
      mSilentRow(kSilenceStretch, inTerms.mTrapReadsOfSilence),
      mInputRows(static_cast<std::size_t>(inFormat.mChannels))
{
    mSubject->Configure(inFormat.mChannels, inFormat.mRate, inMaxBlock);
}

DriveResult Driver::Run(const PlanarRows& inInput, const Drive& inDrive)
{
    auto input = inInput;
    const auto length = input.GetLength();
    DriveResult result{PlanarRows(input.GetChannelCount(), length + kGuardSamples, kUnwritten), 0, false};
    for (std::size_t position = 0, block = 0; position < length; ++block) {
        auto count =
            std::min<std::size_t>(inDrive.mBlocks[block % inDrive.mBlocks.size()], length - position);
        if (!inDrive.mSilence.empty()) {
            count = std::min(count, kSilenceStretch - position % kSilenceStretch);
        }
        const auto silent = inDrive.mFlagSilence ? SilenceAt(inDrive.mSilence, position) : SilenceFlags();
        PrepareBlock(input, result.mOutput, position, count, silent, inDrive.mInPlace);
        float* const* output = result.mOutput.From(position);
        {
            const testing::AllocationCounter counter;
            mSubject->Process(inDrive.mInPlace ? output : mInputRows.data(), output, static_cast<int>(count),
                              silent);
            result.mAllocations += counter.GetAllocations() + counter.GetFrees();
        }
        position += count;
    }
    result.mChangedInput = !(input == inInput);
    return result;
}

/// In place, the output rows get the input; a silent channel is one that must not be read.
void Driver::PrepareBlock(PlanarRows& ioInput, PlanarRows& ioOutput, std::size_t inPosition,
                          std::size_t inCount, SilenceFlags inSilent, bool inInPlace)
{
    for (std::size_t channel = 0; channel < ioInput.GetChannelCount(); ++channel) {
        const float* const input = ioInput[channel].data() + inPosition;
        const bool isSilent = inSilent.GetBit(channel);
        mInputRows[channel] = isSilent ? mSilentRow.Get() : input;
        float* const output = ioOutput[channel].data() + inPosition;
        if (inInPlace && isSilent) {
            std::fill_n(output, inCount, std::numeric_limits<float>::quiet_NaN());
        } else if (inInPlace) {
            std::copy_n(input, inCount, output);
        }
    }
}

} // namespace tessaro::contract
