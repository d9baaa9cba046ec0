#include "utility/LookAheadStreamer.h"

#include <algorithm>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

namespace kernels = brisken::utility;
using SilenceFlags = ombrel::utility::Flags<std::uint64_t>;

} // namespace

LookAheadStreamer::LookAheadStreamer(AudioProcessor& ioWrapped) : mWrapped(ioWrapped) {}

LookAheadStreamer::~LookAheadStreamer() = default;

void LookAheadStreamer::SetMode(int inNumChannels, int inSamplingRate, int inMaxBlockSize)
{
    AudioProcessor::SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
    mWrapped.SetMode(inNumChannels, inSamplingRate, inMaxBlockSize);
    const int lookAhead = std::max(mWrapped.GetLookAhead(), 0);
    mWork.SetMode(inNumChannels, inSamplingRate, inMaxBlockSize + lookAhead);
    mHistory.SetTailMode(inNumChannels, inSamplingRate, 0, lookAhead, true);
    ReportDelay();
    Reset();
}

void LookAheadStreamer::ChangeBufferSize(int inMaxBlockSize)
{
    // The base class's form would call `SetMode`, which clears the history.
    AudioProcessor::SetMode(GetNumChannels(), GetSamplingRate(), inMaxBlockSize);
    mWrapped.ChangeBufferSize(inMaxBlockSize);
    mWork.ChangeBufferSize(static_cast<int>(GetHeldSamples()) + inMaxBlockSize);
}

void LookAheadStreamer::TakeOverLookAhead()
{
    const auto before = GetHeldSamples();
    const int lookAhead = std::max(mWrapped.GetLookAhead(), 0);
    mWork.ChangeBufferSize(lookAhead + GetMaxBlockSize());
    mHistory.SetTailMode(GetNumChannels(), GetSamplingRate(), 0, lookAhead, false);
    for (auto& silent : mSilentSamples) {
        silent = silent >= before ? GetHeldSamples() : 0;
    }
    ReportDelay();
}

void LookAheadStreamer::ReportDelay()
{
    SetSystemDelay(mWrapped.GetSystemDelay() + static_cast<int>(GetHeldSamples()));
}

void LookAheadStreamer::Process(const float* const* inInput, int inNumSamples, float* const* outOutput,
                                SilenceFlags inSilentChannels)
{
    AudioProcessor::Process(inInput, inNumSamples, outOutput, inSilentChannels);
    const auto count = static_cast<unsigned>(inNumSamples);
    mWork.ResetTotal();
    mWork.Append(mHistory, GetHeldSamples(), 0);
    AppendInput(inInput, count, inSilentChannels);
    const auto silent = FollowSilence(inSilentChannels, count);

    // The last samples of history and block become the next history.
    mHistory.ResetTotal();
    mHistory.Append(mWork, GetHeldSamples(), inNumSamples);
    if (!mIsBypassed) {
        mWrapped.Process(mWork, inNumSamples, outOutput, silent);
    }
}

void LookAheadStreamer::AppendInput(const float* const* inInput, unsigned inNumSamples,
                                    SilenceFlags inSilentChannels)
{
    for (int channel = 0; channel < GetNumChannels() && inNumSamples != 0; ++channel) {
        float* const row = mWork.GetPointer()[channel] + mWork.GetTotal();
        if (inSilentChannels.GetBitModulo(static_cast<std::size_t>(channel))) {
            kernels::Zero(inNumSamples, row);
        } else {
            kernels::Copy(inNumSamples, inInput[channel], row);
        }
    }
    mWork.AddTotal(inNumSamples);
}

/// Takes the block into account, and returns the channels that are silent in all that the work rows hold.
SilenceFlags LookAheadStreamer::FollowSilence(SilenceFlags inSilentChannels, unsigned inNumSamples)
{
    SilenceFlags silentThroughout;
    for (std::size_t flag = 0; flag < mSilentSamples.size(); ++flag) {
        auto& silent = mSilentSamples[flag];
        if (inSilentChannels.GetBit(flag)) {
            silentThroughout.SetBit(flag, silent >= GetHeldSamples());
            silent = std::min(silent + inNumSamples, GetHeldSamples());
        } else if (inNumSamples != 0) {
            silent = 0;
        }
    }
    return silentThroughout;
}

void LookAheadStreamer::Reset()
{
    mWrapped.Reset();
    mHistory.Reset();
    mSilentSamples.fill(GetHeldSamples());
}

} // namespace tessaro
