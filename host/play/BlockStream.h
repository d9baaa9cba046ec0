#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

#include <boost/lockfree/spsc_queue.hpp>

#include <tessaro/buffering/AudioBuffer.h>

#include "AudioFileReader.h"
#include "AudioFileWriter.h"

namespace host {

/// Blocks of a file for a thread that may not wait: a thread of its own reads ahead and writes what comes
/// back. `Take` and `GiveBack` are for the playing thread; they neither allocate nor wait.
class BlockStream
{
public:
    /// Without a writer, blocks that come back are dropped. Reads ahead before it returns; both files outlive
    /// the stream. `inBlocks` is how many blocks there are between the threads.
    BlockStream(AudioFileReader& ioReader, AudioFileWriter* ioWriter, unsigned inBlock, std::size_t inBlocks);
    ~BlockStream();
    BlockStream(const BlockStream&) = delete;
    BlockStream& operator=(const BlockStream&) = delete;

    /// The next block; null when none has been read yet, or at the end.
    tessaro::AudioBuffer* Take();
    /// True when all blocks have been taken, also because the file cannot be read on.
    bool IsAtEnd() const { return mIsReadOut.load(std::memory_order_acquire) && mRead.read_available() == 0; }

    /// Hands the block that was taken last back, to be written.
    void GiveBack(tessaro::AudioBuffer* inBlock) { mPlayed.push(inBlock); }

    /// Writes what has been given back, and ends. Throws what reading or writing threw.
    void Finish();

private:
    using Queue = boost::lockfree::spsc_queue<tessaro::AudioBuffer*>;

    void Run() noexcept;
    void WritePlayed();
    void ReadAhead();

    AudioFileReader& mReader;
    AudioFileWriter* mWriter;
    unsigned mBlock;
    std::vector<std::unique_ptr<tessaro::AudioBuffer>> mBlocks;
    std::vector<tessaro::AudioBuffer*> mFree;
    Queue mRead;
    Queue mPlayed;
    std::atomic<bool> mIsReadOut{false};
    std::atomic<bool> mIsStopped{false};
    std::exception_ptr mError;
    std::thread mThread;
};

} // namespace host
