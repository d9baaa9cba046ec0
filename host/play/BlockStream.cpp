#include "play/BlockStream.h"

#include <chrono>

namespace host {

namespace {

constexpr auto kPause = std::chrono::microseconds(500);

} // namespace

BlockStream::BlockStream(AudioFileReader& ioReader, AudioFileWriter* ioWriter, unsigned inBlock,
                         std::size_t inBlocks)
    : mReader(ioReader), mWriter(ioWriter), mBlock(inBlock), mRead(inBlocks), mPlayed(inBlocks)
{
    for (std::size_t i = 0; i < inBlocks; ++i) {
        mBlocks.push_back(std::make_unique<tessaro::AudioBuffer>(
            static_cast<std::size_t>(ioReader.GetChannelCount()), inBlock));
        mFree.push_back(mBlocks.back().get());
    }
    ReadAhead();
    mThread = std::thread([this] { Run(); });
}

BlockStream::~BlockStream()
{
    mIsStopped = true;
    if (mThread.joinable()) {
        mThread.join();
    }
}

tessaro::AudioBuffer* BlockStream::Take()
{
    tessaro::AudioBuffer* block = nullptr;
    mRead.pop(block);
    return block;
}

void BlockStream::Finish()
{
    mIsStopped = true;
    mThread.join();
    if (mError != nullptr) {
        std::rethrow_exception(mError);
    }
    WritePlayed();
}

void BlockStream::Run() noexcept
{
    try {
        while (!mIsStopped) {
            WritePlayed();
            ReadAhead();
            std::this_thread::sleep_for(kPause);
        }
    } catch (...) {
        mError = std::current_exception();
        mIsReadOut.store(true, std::memory_order_release);
    }
}

void BlockStream::WritePlayed()
{
    mPlayed.consume_all([this](tessaro::AudioBuffer* inBlock) {
        if (mWriter != nullptr) {
            mWriter->Write(*inBlock);
        }
        mFree.push_back(inBlock);
    });
}

void BlockStream::ReadAhead()
{
    while (!mIsReadOut.load(std::memory_order_relaxed) && !mFree.empty()) {
        if (mReader.Read(*mFree.back(), mBlock) == 0) {
            mIsReadOut.store(true, std::memory_order_release);
            return;
        }
        mRead.push(mFree.back());
        mFree.pop_back();
    }
}

} // namespace host
