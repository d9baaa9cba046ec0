#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tessaro::testing {

struct HostResult
{
    int mStatus = -1;
    std::string mOutput;
    std::string mError;
};

/// Runs tessaro-host. `inFileSizeLimit` above 0 makes every write past that many bytes fail, as on a full
/// disk.
HostResult RunHost(const std::vector<std::string>& inArguments, long inFileSizeLimit = 0);

/// Planar samples of a file, and what its header says.
struct TestAudio
{
    int mSampleRate = 48000;
    int mFormat = 0; // of libsndfile
    std::vector<std::vector<float>> mChannels;

    std::size_t GetFrameCount() const { return mChannels.empty() ? 0 : mChannels.front().size(); }
};

void WriteAudio(const std::filesystem::path& inPath, const TestAudio& inAudio);
TestAudio ReadAudio(const std::filesystem::path& inPath);

/// Gives each test an empty directory of its own and knows the two ways in which the host may end badly.
class HostTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    std::filesystem::path Path(const std::string& inName) const { return mDirectory / inName; }
    std::string Name(const std::string& inName) const { return Path(inName).string(); }

    /// The run fails with the status and one line that holds each of the texts, and leaves no new file
    /// behind.
    void ExpectFailure(const std::vector<std::string>& inArguments, int inStatus,
                       const std::vector<std::string>& inTexts, long inFileSizeLimit = 0);

    /// A 16-bit WAV whose samples are whole steps: channel c holds a sine of 100 * (c + 1) Hz.
    TestAudio WriteSines(const std::string& inName, int inChannels, std::size_t inFrames);

    std::filesystem::path mDirectory;
};

} // namespace tessaro::testing
