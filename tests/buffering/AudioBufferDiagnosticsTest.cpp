#include <tessaro/buffering/AudioBufferDiagnostics.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <ombrel/config/OmbrelException.h>
#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioBufferGeneratorDump.h>

namespace tessaro::debug {

namespace {

class AudioBufferDiagnosticsTest : public ::testing::Test
{
protected:
    AudioBufferDiagnosticsTest()
    {
        mBuffer.ZeroBuffers();
        mBuffer[1][2] = 0.5f;
        const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        mFile = std::filesystem::path(::testing::TempDir()) / ("tessaro-" + test);
    }
    ~AudioBufferDiagnosticsTest() override { std::filesystem::remove(mFile); }

    std::string ReadFile() const
    {
        std::ifstream stream(mFile, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Number or sample at a byte of the file.
    template <typename T>
    T At(std::size_t inByte) const
    {
        const auto bytes = ReadFile();
        T value{};
        if (inByte + sizeof(T) <= bytes.size()) {
            std::memcpy(&value, bytes.data() + inByte, sizeof(T));
        }
        return value;
    }

    void ExpectWave(std::uint16_t inChannels, std::uint32_t inFrames) const
    {
        const auto dataBytes = inFrames * inChannels * 4;
        EXPECT_EQ(ReadFile().size(), 58 + dataBytes);
        EXPECT_EQ(ReadFile().substr(0, 4), "RIFF");
        EXPECT_EQ(ReadFile().substr(8, 8), "WAVEfmt ");
        EXPECT_EQ(At<std::uint32_t>(4), 50 + dataBytes);
        EXPECT_EQ(At<std::uint16_t>(20), 3); // IEEE float
        EXPECT_EQ(At<std::uint16_t>(22), inChannels);
        EXPECT_EQ(At<std::uint32_t>(24), 44100u);
        EXPECT_EQ(At<std::uint32_t>(28), 44100u * 4 * inChannels);
        EXPECT_EQ(At<std::uint16_t>(32), 4 * inChannels);
        EXPECT_EQ(At<std::uint16_t>(34), 32);
        EXPECT_EQ(At<std::uint32_t>(46), inFrames);
        EXPECT_EQ(ReadFile().substr(50, 4), "data");
        EXPECT_EQ(At<std::uint32_t>(54), dataBytes);
    }
    float SampleAt(std::size_t inIndex) const { return At<float>(58 + 4 * inIndex); }

    AudioBuffer mBuffer{2, 4};
    std::filesystem::path mFile;
};

TEST_F(AudioBufferDiagnosticsTest, ChecksThrowOnImplausibleSamplesOfAudibleChannels)
{
    AssertAudioBufferInRange(nullptr);
    AssertAudioBufferInRange(&mBuffer);
    EXPECT_THROW(AssertAudioBufferInRange(&mBuffer, 0.25f), ombrel::ombrel_exception);
    for (const float bad : {1001.0f, -1001.0f, std::numeric_limits<float>::infinity(), std::nanf("")}) {
        mBuffer[0][3] = bad;
        mBuffer.ClearZeroFlags();
        EXPECT_THROW(AssertAudioBufferInRange(&mBuffer), ombrel::ombrel_exception) << bad;
        mBuffer.MarkChannelZero(0);
        AssertAudioBufferInRange(&mBuffer);
    }
    AssertSilence<float>(mBuffer[1], 2);
    EXPECT_THROW(AssertSilence<float>(mBuffer[1], 3), ombrel::ombrel_exception);
}

TEST_F(AudioBufferDiagnosticsTest, TextHoldsOneSampleALineExactly)
{
    const double samples[] = {1.0 / 3.0, -2.0};
    EXPECT_TRUE(DumpFloatBufferToTextFile(samples, 2, mFile));
    EXPECT_EQ(std::stod(ReadFile()), samples[0]);
    EXPECT_TRUE(ReadFile().ends_with("\n-2\n"));
    EXPECT_FALSE(DumpFloatBufferToTextFile(samples, 2, mFile / "not a folder"));
}

TEST_F(AudioBufferDiagnosticsTest, WaveFilesHoldWhatTheReaderOfTheFlagsHears)
{
    mBuffer[0][0] = 9.0f;
    mBuffer.MarkChannelZero(0);
    EXPECT_TRUE(DumpFloatBufferToAudioFile(mBuffer, 44100, mFile));
    ExpectWave(2, 4);
    EXPECT_EQ(SampleAt(0), 0.0f);
    EXPECT_EQ(SampleAt(5), 0.5f);
    EXPECT_TRUE(DumpFloatBufferToAudioFile(mBuffer.GetFloatBuffers(), 2, 3, 44100, mFile));
    ExpectWave(2, 3);
    EXPECT_EQ(SampleAt(0), 9.0f);
    EXPECT_TRUE(DumpFloatBufferToAudioFile(mBuffer[1], 4, 44100, mFile));
    ExpectWave(1, 4);
    EXPECT_EQ(SampleAt(2), 0.5f);
    EXPECT_FALSE(DumpFloatBufferToAudioFile(mBuffer, 44100, mFile / "not a folder"));
}

TEST_F(AudioBufferDiagnosticsTest, GeneratorDumpPassesBuffersOnAndWritesThem)
{
    using Buffer = std::shared_ptr<AudioBuffer>;
    const auto source = ombrel::async::CreateFunctionGenerator<Buffer>(
        [this](unsigned inIndex) {
            if (inIndex == 2) {
                throw ombrel::async::StopGeneratorException();
            }
            return std::make_shared<AudioBuffer>(mBuffer);
        },
        ombrel::async::GetDefaultExecutor());
    const auto dump = DumpAudioBufferGeneratorToFile(source, 44100, mFile);
    EXPECT_EQ(dump->Executor(), source->Executor());
    EXPECT_EQ((*dump->Next().Get())[1][2], 0.5f);
    ExpectWave(2, 4);
    dump->Next().Get();
    ExpectWave(2, 8);
    EXPECT_EQ(SampleAt(13), 0.5f);
    EXPECT_THROW(dump->Next().Get(), ombrel::async::StopGeneratorException);
}

} // namespace

} // namespace tessaro::debug
