#include "OfflineDriver.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <tessaro/buffering/AudioBufferHelpers.h>
#include <tessaro/frame/DSPMultiPassAnalyzer.h>

#include "FlushToZero.h"
#include "HostError.h"
#include "Progress.h"

namespace host {

namespace {

constexpr unsigned kBlock = 4096;
constexpr unsigned kLargestAnalysisBlock = 1 << 24;
/// Calls that may pass without an analyzer moving on through its selection: it may want larger blocks first,
/// or make passes over nothing.
constexpr int kMostIdleCalls = 64;
/// A process that still has something to flush after this time is not going to end.
constexpr std::int64_t kLongestTailSeconds = 600;

std::vector<float*> RowsOf(std::vector<std::vector<float>>& ioRows)
{
    std::vector<float*> rows;
    for (auto& row : ioRows) {
        rows.push_back(row.data());
    }
    return rows;
}

} // namespace

OfflineDriver::OfflineDriver(std::string inTask, AudioSource& ioSource)
    : mTask(std::move(inTask)),
      mSource(ioSource),
      mChunk(static_cast<std::size_t>(ioSource.GetChannelCount()), kBlock),
      mInput(static_cast<std::size_t>(ioSource.GetChannelCount()))
{
}

void OfflineDriver::Analyze(tessaro::DSPAnalyzer& ioAnalyzer, const Selection& inSelection)
{
    const int channels = mSource.GetChannelCount();
    const auto* multiPass = dynamic_cast<const tessaro::DSPMultiPassAnalyzer*>(&ioAnalyzer);
    ioAnalyzer.SetIOConfig(channels, static_cast<float>(mSource.GetSampleRate()));
    if (!ioAnalyzer.SetSelection(inSelection.mStart, inSelection.mLength)) {
        throw HostError(HostError::kWorkFailed, mTask, "cannot be done over this selection; choose another");
    }
    ioAnalyzer.Start(nullptr);

    const FlushToZero flushToZero;
    constexpr std::int64_t kWhole = 10000;
    Progress progress(mTask, kWhole);
    auto position = inSelection.mStart;
    for (int idleCalls = 0; idleCalls < kMostIdleCalls;) {
        const auto end = inSelection.mStart + inSelection.mLength + ioAnalyzer.GetLatency();
        const auto desired = static_cast<unsigned>(
            std::clamp(ioAnalyzer.GetDesiredBlockSize(), 1, static_cast<int>(kLargestAnalysisBlock)));
        const auto count = std::clamp<std::int64_t>(end - position, 0, desired);
        ReadAt(position, desired);
        const auto consumed = ioAnalyzer.Analyze(mInputRows.data(), channels, static_cast<int>(count));
        if (ioAnalyzer.IsCompleted()) { // once a block: it is what turns to the next pass
            ioAnalyzer.Done();
            return;
        }
        const auto next = multiPass ? multiPass->GetCurrentPosition() : position + consumed;
        idleCalls = count == 0 || next == position ? idleCalls + 1 : 0;
        position = next;
        if (const float percent = ioAnalyzer.GetProgress(); std::isfinite(percent)) {
            progress.Update(static_cast<std::int64_t>(percent / 100.0f * kWhole));
        }
    }
    throw HostError(HostError::kWorkFailed, mTask, "came to no end at frame " + std::to_string(position));
}

std::int64_t OfflineDriver::Process(tessaro::DSPProcess& ioProcess, const Selection& inSelection,
                                    const Sink& inSink)
{
    const int channels = mSource.GetChannelCount();
    ioProcess.SetIOConfig(channels, static_cast<float>(mSource.GetSampleRate()));
    if (!ioProcess.SetSelection(inSelection.mStart, inSelection.mLength)) {
        throw HostError(HostError::kWorkFailed, mTask, "cannot be done over this selection; choose another");
    }
    ioProcess.Start();

    const FlushToZero flushToZero;
    const std::int64_t latency = std::max(0, ioProcess.GetLatency());
    const auto total = inSelection.mLength + latency;
    Progress progress(mTask, total);
    Rows output(mInput.size(), std::vector<float>(kBlock));
    const auto outputRows = RowsOf(output);
    for (std::int64_t done = 0; done < total;) {
        const auto count = static_cast<unsigned>(std::min<std::int64_t>(kBlock, total - done));
        ReadAt(inSelection.mStart + done, count);
        ioProcess.Process(mInputRows.data(), outputRows.data(), channels, static_cast<int>(count));
        const auto late = static_cast<unsigned>(std::clamp<std::int64_t>(latency - done, 0, count));
        Deliver(output, late, count - late, inSink);
        progress.Update(done += count);
    }
    const auto flushed = FlushInto(ioProcess, output, inSink);
    ioProcess.Done();
    return flushed;
}

/// Fills the input rows with `inCount` frames from `inPosition` on; silence behind the end of the source.
void OfflineDriver::ReadAt(std::int64_t inPosition, unsigned inCount)
{
    if (mInput.front().size() < inCount) {
        mInputRows.clear();
        for (auto& row : mInput) {
            row.resize(inCount);
            mInputRows.push_back(row.data());
        }
    }
    const auto there =
        static_cast<unsigned>(std::clamp<std::int64_t>(mSource.GetFrameCount() - inPosition, 0, inCount));
    if (there > 0) {
        mSource.Seek(inPosition);
    }
    unsigned read = 0;
    while (read < there) {
        const auto got = mSource.Read(mChunk, std::min(kBlock, there - read));
        if (got == 0) {
            break;
        }
        tessaro::ZeroBufferAccordingToSilenceFlags(mChunk);
        for (std::size_t channel = 0; channel < mInput.size(); ++channel) {
            std::copy_n(mChunk[channel], got, mInput[channel].data() + read);
        }
        read += got;
    }
    for (auto& row : mInput) {
        std::fill(row.begin() + read, row.begin() + inCount, 0.0f);
    }
}

void OfflineDriver::Deliver(const Rows& inRows, unsigned inFirst, unsigned inCount, const Sink& inSink)
{
    if (inCount == 0) {
        return;
    }
    mChunk.SetUseSize(inCount);
    mChunk.ClearZeroFlags();
    for (std::size_t channel = 0; channel < inRows.size(); ++channel) {
        std::copy_n(inRows[channel].data() + inFirst, inCount, mChunk[channel]);
    }
    inSink(mChunk);
}

std::int64_t OfflineDriver::FlushInto(tessaro::DSPProcess& ioProcess, Rows& ioRows, const Sink& inSink)
{
    const auto rows = RowsOf(ioRows);
    const auto longest = kLongestTailSeconds * mSource.GetSampleRate();
    std::int64_t flushed = 0;
    while (const int count =
               std::clamp(ioProcess.Flush(rows.data(), mSource.GetChannelCount(), static_cast<int>(kBlock)),
                          0, static_cast<int>(kBlock))) {
        Deliver(ioRows, 0, static_cast<unsigned>(count), inSink);
        flushed += count;
        if (flushed > longest) {
            throw HostError(HostError::kWorkFailed, mTask, "has a tail that does not end");
        }
    }
    return flushed;
}

} // namespace host
