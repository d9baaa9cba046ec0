#include <tessaro/buffering/AudioBufferGeneratorDump.h>

#include <mutex>
#include <optional>
#include <utility>

#include <tessaro/buffering/AudioBuffer.h>

#include "buffering/FloatWaveFile.h"

namespace tessaro::debug {

namespace {

using BufferGenerator = ombrel::async::Generator<std::shared_ptr<AudioBuffer>>;

/// The file behind a dump. Shared with the work in progress, which may outlive the generator and end on any
/// thread.
class Dump
{
public:
    Dump(unsigned inSampleRate, std::filesystem::path inFile)
        : mSampleRate(inSampleRate), mFile(std::move(inFile))
    {
    }

    void Append(const AudioBuffer& inBuffer)
    {
        const std::lock_guard lock(mMutex);
        if (!mWave) {
            mWave.emplace(mFile, inBuffer.GetChannelCount(), mSampleRate);
        }
        mWave->Append(inBuffer);
    }

private:
    unsigned mSampleRate;
    std::filesystem::path mFile;
    std::mutex mMutex;
    std::optional<FloatWaveFile> mWave;
};

class DumpingGenerator final : public BufferGenerator
{
public:
    DumpingGenerator(std::shared_ptr<BufferGenerator> inSource, std::shared_ptr<Dump> inDump)
        : mSource(std::move(inSource)), mDump(std::move(inDump))
    {
    }

    ombrel::async::Future<std::shared_ptr<AudioBuffer>> Next() override
    {
        return mSource->Next().OnSuccess([dump = mDump](const std::shared_ptr<AudioBuffer>& inBuffer) {
            if (inBuffer != nullptr) {
                dump->Append(*inBuffer);
            }
            return inBuffer;
        });
    }

    std::shared_ptr<ombrel::threads::AsyncExecutor> Executor() const override { return mSource->Executor(); }

private:
    std::shared_ptr<BufferGenerator> mSource;
    std::shared_ptr<Dump> mDump;
};

} // namespace

std::shared_ptr<BufferGenerator> DumpAudioBufferGeneratorToFile(std::shared_ptr<BufferGenerator> inSource,
                                                                unsigned inSampleRate,
                                                                const std::filesystem::path& inFile)
{
    return std::make_shared<DumpingGenerator>(std::move(inSource),
                                              std::make_shared<Dump>(inSampleRate, inFile));
}

} // namespace tessaro::debug
