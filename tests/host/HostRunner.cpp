#include "HostRunner.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>

#include <fcntl.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tessaro::testing {

namespace {

std::string ReadAll(const std::filesystem::path& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Redirect(const std::string& inPath, int inDescriptor)
{
    const int file = open(inPath.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    dup2(file, inDescriptor);
    close(file);
}

std::set<std::string> ListFiles(const std::filesystem::path& inDirectory)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(inDirectory)) {
        names.insert(entry.path().string());
    }
    return names;
}

} // namespace

HostResult RunHost(const std::vector<std::string>& inArguments, long inFileSizeLimit)
{
    char scratch[] = "/tmp/tessaro-host-test-XXXXXX";
    const std::filesystem::path directory = mkdtemp(scratch);
    const auto output = (directory / "output").string();
    const auto error = (directory / "error").string();
    const pid_t child = fork();
    if (child == 0) {
        Redirect(output, STDOUT_FILENO);
        Redirect(error, STDERR_FILENO);
        if (inFileSizeLimit > 0) {
            const rlimit limit{static_cast<rlim_t>(inFileSizeLimit), static_cast<rlim_t>(inFileSizeLimit)};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        std::vector<char*> arguments{const_cast<char*>("tessaro-host")};
        for (const auto& argument : inArguments) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        execv(TESSARO_HOST_PROGRAM, arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    HostResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadAll(output), ReadAll(error)};
    std::filesystem::remove_all(directory);
    return result;
}

void WriteAudio(const std::filesystem::path& inPath, const TestAudio& inAudio)
{
    SF_INFO info{};
    info.samplerate = inAudio.mSampleRate;
    info.channels = static_cast<int>(inAudio.mChannels.size());
    info.format = inAudio.mFormat;
    SNDFILE* file = sf_open(inPath.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<double> interleaved;
    for (std::size_t i = 0; i < inAudio.GetFrameCount(); ++i) {
        for (const auto& channel : inAudio.mChannels) {
            interleaved.push_back(channel[i]);
        }
    }
    // Whole steps go in and come out as they are: full scale is 32768, not the 32767 of the file library's
    // default.
    if ((info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16) {
        std::vector<short> steps(interleaved.size());
        std::transform(interleaved.begin(), interleaved.end(), steps.begin(),
                       [](double inValue) { return static_cast<short>(std::lround(inValue * 32768.0)); });
        sf_write_short(file, steps.data(), static_cast<sf_count_t>(steps.size()));
    } else {
        sf_write_double(file, interleaved.data(), static_cast<sf_count_t>(interleaved.size()));
    }
    sf_close(file);
}

TestAudio ReadAudio(const std::filesystem::path& inPath)
{
    TestAudio audio;
    SF_INFO info{};
    SNDFILE* file = sf_open(inPath.c_str(), SFM_READ, &info);
    EXPECT_NE(file, nullptr) << inPath << ": " << sf_strerror(nullptr);
    if (file == nullptr) {
        return audio;
    }
    audio.mSampleRate = info.samplerate;
    audio.mFormat = info.format;
    audio.mChannels.resize(static_cast<std::size_t>(info.channels));
    std::vector<float> frame(static_cast<std::size_t>(info.channels));
    while (sf_readf_float(file, frame.data(), 1) == 1) {
        for (std::size_t channel = 0; channel < frame.size(); ++channel) {
            audio.mChannels[channel].push_back(frame[channel]);
        }
    }
    sf_close(file);
    return audio;
}

void HostTest::SetUp()
{
    char scratch[] = "/tmp/tessaro-host-test-XXXXXX";
    mDirectory = mkdtemp(scratch);
}

void HostTest::TearDown()
{
    std::filesystem::remove_all(mDirectory);
}

void HostTest::ExpectFailure(const std::vector<std::string>& inArguments, int inStatus,
                             const std::vector<std::string>& inTexts, long inFileSizeLimit)
{
    std::string line = "tessaro-host";
    for (const auto& argument : inArguments) {
        line += " " + argument;
    }
    SCOPED_TRACE(line);
    const auto before = ListFiles(mDirectory);
    const auto result = RunHost(inArguments, inFileSizeLimit);
    EXPECT_EQ(result.mStatus, inStatus);
    EXPECT_EQ(result.mOutput, "");
    EXPECT_EQ(std::count(result.mError.begin(), result.mError.end(), '\n'), 1) << result.mError;
    EXPECT_EQ(result.mError.rfind("tessaro-host: ", 0), 0u) << result.mError;
    for (const auto& text : inTexts) {
        EXPECT_NE(result.mError.find(text), std::string::npos) << "'" << text << "' in: " << result.mError;
    }
    EXPECT_EQ(ListFiles(mDirectory), before);
}

TestAudio HostTest::WriteSines(const std::string& inName, int inChannels, std::size_t inFrames)
{
    TestAudio audio;
    audio.mFormat = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    for (int channel = 0; channel < inChannels; ++channel) {
        std::vector<float> samples(inFrames);
        for (std::size_t i = 0; i < inFrames; ++i) {
            const double phase =
                2.0 * M_PI * 100.0 * (channel + 1) * static_cast<double>(i) / audio.mSampleRate;
            samples[i] = static_cast<float>(std::round(std::sin(phase) * 0.5 * 32768.0) / 32768.0);
        }
        audio.mChannels.push_back(std::move(samples));
    }
    WriteAudio(Path(inName), audio);
    return audio;
}

} // namespace tessaro::testing
