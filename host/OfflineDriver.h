#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/frame/DSPAnalyzer.h>
#include <tessaro/frame/DSPProcess.h>

#include "AudioSource.h"

namespace host {

/// A stretch of a source, in frames.
struct Selection
{
    std::int64_t mStart = 0;
    std::int64_t mLength = 0;
};

/// Runs analyzers and offline processes over a selection of a source, as an editor's offline task does.
///
/// Behind the end of the selection they get what the source holds there, and silence behind the end of the
/// source: as many frames as their latency. Denormal numbers are flushed to zero while they run. Work that
/// takes above a second shows its progress on a terminal.
class OfflineDriver
{
public:
    /// `inTask` names the work in messages and beside the progress bar. The source must outlive the driver.
    OfflineDriver(std::string inTask, AudioSource& ioSource);

    static Selection SelectAll(const AudioSource& inSource) { return {0, inSource.GetFrameCount()}; }

    /// Drives an analyzer of one pass or, when it is a `tessaro::DSPMultiPassAnalyzer`, of several, from
    /// `SetIOConfig` to `Done`.
    ///
    /// The rows of a block always hold as many frames as the analyzer desired; the count that it is told is
    /// cut at the end of selection and latency. Throws `HostError` when the selection is refused, or when the
    /// analyzer still wants more behind that end.
    void Analyze(tessaro::DSPAnalyzer& ioAnalyzer, const Selection& inSelection);

    /// Takes a block of output. Throws to end the work.
    using Sink = std::function<void(const tessaro::AudioBuffer&)>;

    /// Drives a process from `SetIOConfig` to `Done`. Its latency is taken out: the sink gets exactly the
    /// selection's length, in step with the input, and behind that what `Flush` gave. Returns how many frames
    /// came from `Flush`.
    std::int64_t Process(tessaro::DSPProcess& ioProcess, const Selection& inSelection, const Sink& inSink);

private:
    using Rows = std::vector<std::vector<float>>;

    void ReadAt(std::int64_t inPosition, unsigned inCount);
    void Deliver(const Rows& inRows, unsigned inFirst, unsigned inCount, const Sink& inSink);
    std::int64_t FlushInto(tessaro::DSPProcess& ioProcess, Rows& ioRows, const Sink& inSink);

    std::string mTask;
    AudioSource& mSource;
    tessaro::AudioBuffer mChunk;
    Rows mInput;
    std::vector<const float*> mInputRows;
};

} // namespace host
