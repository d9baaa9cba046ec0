#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <tuple>

#include <ombrel/async/Generator.h>
#include <ombrel/threads/AsyncExecutor.h>
#include <ombrel/utility/ValueRange.h>
#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>

/// Long audio as a stream of buffers that arrive as futures, so that an analysis can walk through it in
/// blocks of fixed size and overlap without holding up its caller:
///
///     auto chunks = CreateAudioBufferGenerator(readFrames, totalSize, 4096, 256, 0, CreateSerialExecutor());
///     chunks->Next().OnSuccess(executor, [](const AudioBufferChunk& inChunk) { ... });
///
/// Chunks. All in frames: neighbouring chunks of `chunkSize` start `hopSize = chunkSize - 2 * marginSize -
/// tailSize` apart, and so share `2 * marginSize + tailSize` frames. Chunk 0 starts `marginSize` before the
/// first frame, so that the part of chunk i between its margins, with no tail, covers the audio from i hops
/// to i + 1 hops.
///
/// Streams. The end travels as `ombrel::async::StopGeneratorException` in the futures. An exception of the
/// source, or of a stage before, is delivered by the `Next` that met it, and the following one tries to go on
/// behind it. Several futures may be pending; they are done in order. `Next` is called by one thread at a
/// time. No stage waits for anything. Generators lock and allocate: not for real-time threads.
namespace tessaro::async {

/// A buffer with the place of its frames in the source. The buffer is the receiver's own.
using AudioBufferChunk = std::tuple<std::shared_ptr<AudioBuffer>, ombrel::value_range<std::int64_t>>;

using AudioBufferChunkGenerator = ombrel::async::Generator<AudioBufferChunk>;
using AudioBufferGenerator = ombrel::async::Generator<std::shared_ptr<AudioBuffer>>;

/// The frames that chunk `inIndex` stands for. They begin before 0 for the first chunk with a margin, and may
/// go past the end of the source. [any thread]
[[nodiscard]] TESSARO_EXPORT ombrel::value_range<std::int64_t>
GetChunkRange(unsigned inIndex, std::int64_t inChunkSize, std::int64_t inMarginSize, std::int64_t inTailSize);

/// The first and the last index, both of them included, of the chunks that hold the frame `inPosition`
/// between their margins. So start and end are equal when one chunk holds it. A negative position counts as
/// 0. The hop size must not be 0. [any thread]
[[nodiscard]] TESSARO_EXPORT ombrel::value_range<unsigned> GetChunksContaining(std::int64_t inPosition,
                                                                               std::int64_t inChunkSize,
                                                                               std::int64_t inMarginSize,
                                                                               std::int64_t inTailSize);

/// A stream of overlapping chunks of mono audio that `inSource` reads. The source is a plain sequential
/// reader: it gets one row and a number of frames to write there, `inChunkSize` in its first call and the hop
/// size from then on. It supplies full length also where the audio ends: every chunk is full size. It runs on
/// `inExecutor`, one call at a time. Frames of a call that throws count as silence in the next chunks.
///
/// The stream ends with the first chunk that would begin, behind its margin, at `inTotalSize` or later.
///
/// Throws `ombrel_exception` if the executor's degree of concurrency is not 1 or the sizes are negative,
/// above what a buffer holds, or leave a negative hop, and `std::bad_function_call` if source or executor is
/// empty. A hop size of 0 makes an endless stream.
[[nodiscard]] TESSARO_EXPORT std::shared_ptr<AudioBufferChunkGenerator>
CreateAudioBufferGenerator(std::function<void(float* const* outRows, std::int64_t inFrames)> inSource,
                           std::int64_t inTotalSize, std::int64_t inChunkSize, std::int64_t inMarginSize,
                           std::int64_t inTailSize,
                           std::shared_ptr<ombrel::threads::AsyncExecutor> inExecutor);

/// The chunks' buffers alone.
[[nodiscard]] TESSARO_EXPORT std::shared_ptr<AudioBufferGenerator>
CreateAudioBufferGenerator(const std::shared_ptr<AudioBufferChunkGenerator>& inSource);

/// The result code of a chunk that cannot be split evenly.
inline constexpr std::uint32_t kResultUnevenSplit = 0xA00F000C;

/// Cuts chunks into slices of `inSplitSize` frames, with all channels and silence flags. A slice that is at
/// hand comes in a future that is done already.
///
/// The future for the first slice of a chunk whose frame count is 0 or not a multiple of `inSplitSize`
/// carries an `ombrel_exception` with the code `kResultUnevenSplit` instead; the futures behind it give the
/// slices that fit into that chunk, and then go on with the next.
[[nodiscard]] TESSARO_EXPORT std::shared_ptr<AudioBufferChunkGenerator>
SplitAudioBufferGenerator(const std::shared_ptr<AudioBufferChunkGenerator>& inSource,
                          const std::int64_t& inSplitSize);

/// Of a stream's frames, counted from 0, those inside `inRange`: buffers outside are left out, those across a
/// border are replaced by a copy of their inner part, the others are passed on as they are. The stream ends
/// with the range or with the source; the source is not asked for buffers behind the range.
[[nodiscard]] TESSARO_EXPORT std::shared_ptr<AudioBufferGenerator>
TrimAudioBufferGenerator(const std::shared_ptr<AudioBufferGenerator>& inSource,
                         const ombrel::value_range<std::int64_t>& inRange);

} // namespace tessaro::async
