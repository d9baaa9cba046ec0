#include <ombrel/filesupport/ByteStream.h>
#include <ombrel/filesupport/File.h>
#include <ombrel/utility/FileUtils.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <ombrel/config/OmbrelException.h>

namespace {

using namespace ombrel::filesupport;
using ombrel::utility::FileUtils;

std::filesystem::path NewPath(const std::string& inName)
{
    return std::filesystem::path(::testing::TempDir()) /
           ("ombrel-" + std::to_string(::getpid()) + "-" + inName);
}

template <typename Call>
std::string MessageOf(const Call& inCall)
{
    try {
        inCall();
    } catch (const ombrel::ombrel_exception& exception) {
        EXPECT_EQ(exception.GetResult(), ombrel::config::kResultFileFailure);
        return exception.what();
    }
    return {};
}

std::string Contents(const File& inFile)
{
    OPlatformByteStream stream(inFile, OpenMode::kRead);
    std::string text(static_cast<std::size_t>(stream.GetSize()), '\0');
    stream.ReadExactly(text.data(), text.size());
    return text;
}

TEST(FileTest, CreatesReplacesAndDeletes)
{
    File file(NewPath("create"), StorageType::kTemporary);
    EXPECT_FALSE(file.Exists());
    EXPECT_NE(MessageOf([&] { static_cast<void>(file.Size()); }).find(file.GetPath().string()),
              std::string::npos);
    EXPECT_TRUE(file.Create(false));
    EXPECT_TRUE(FileUtils::SimpleWriteStringToFile(file.GetPath(), "abc"));
    EXPECT_FALSE(file.Create(false));
    EXPECT_EQ(file.Size(), 3u);
    EXPECT_TRUE(FileUtils::SimpleAppendStringToFile(file.GetPath(), "\r\n"));
    EXPECT_EQ(Contents(file), "abc\r\n");
    EXPECT_TRUE(file.Create(true));
    EXPECT_EQ(file.Size(), 0u);
    EXPECT_TRUE(file.Delete());
    EXPECT_FALSE(file.Delete());
    EXPECT_FALSE(File(::testing::TempDir()).Exists());
}

TEST(FileTest, TemporaryFilesGoWithTheLastReference)
{
    const auto path = NewPath("temporary");
    auto file = std::make_unique<File>(path, StorageType::kTemporary);
    auto stream = std::make_unique<OPlatformByteStream>(*file, OpenMode::kWrite);
    file.reset();
    EXPECT_TRUE(File(path).Exists());
    stream.reset();
    EXPECT_FALSE(File(path).Exists());
}

TEST(ByteStreamTest, FailuresNameTheFileAndTheReason)
{
    const File missing(NewPath("missing") / "file");
    const auto path = missing.GetPath().string();
    EXPECT_EQ(MessageOf([&] { OPlatformByteStream(missing, OpenMode::kRead); }),
              "Can't open \"" + path + "\": No such file or directory");
    EXPECT_EQ(
        MessageOf([&] { OBufferedByteStream(missing, OpenMode::kWrite); }).rfind("Can't open \"" + path, 0),
        0u);
    EXPECT_NE(MessageOf([&] { OPlatformByteStream(File(::testing::TempDir()), OpenMode::kRead); }), "");
    EXPECT_FALSE(FileUtils::SimpleWriteStringToFile(missing.GetPath(), "x"));

    const File file(NewPath("readonly"), StorageType::kTemporary);
    ASSERT_TRUE(FileUtils::SimpleWriteStringToFile(file.GetPath(), "abc"));
    OBufferedByteStream stream(file, OpenMode::kRead);
    char text[4];
    EXPECT_EQ(MessageOf([&] { stream.ReadExactly(text, 4); }),
              "Can't read \"" + file.GetPath().string() + "\": the file ends too early");
    EXPECT_NE(MessageOf([&] { stream.Write("x", 1); }), "");
    EXPECT_NE(MessageOf([&] { stream.Seek(-1, SeekOrigin::kBegin); }), "");
    EXPECT_NE(MessageOf([&] { OPlatformByteStream(file, OpenMode::kRead).Seek(-1, SeekOrigin::kBegin); }),
              "");
    EXPECT_EQ(stream.GetPosition(), 3);
    OBufferedByteStream full(File("/dev/full"), OpenMode::kWrite);
    full.Write("x", 1);
    EXPECT_NE(MessageOf([&] { full.Flush(); }).find("/dev/full"), std::string::npos);
}

TEST(ByteStreamTest, ReadsAPipeFromEndToEnd)
{
    const File pipe(NewPath("pipe"), StorageType::kTemporary);
    ASSERT_EQ(::mkfifo(pipe.GetPath().c_str(), 0600), 0);
    const std::string text(200000, 'x');
    std::thread writer([&] { FileUtils::SimpleWriteStringToFile(pipe.GetPath(), text); });
    OBufferedByteStream stream(pipe, OpenMode::kRead, 1000);
    std::string read;
    for (std::size_t count = 1; count > 0;) {
        char part[777];
        count = stream.Read(part, sizeof(part));
        read.append(part, count);
    }
    writer.join();
    EXPECT_EQ(read, text);
}

TEST(ByteStreamTest, AppendingWritesGoBehindWhatOthersAppend)
{
    const File file(NewPath("append"), StorageType::kTemporary);
    OPlatformByteStream first(file, OpenMode::kAppend);
    OPlatformByteStream second(file, OpenMode::kAppend);
    first.Write("1", 1);
    second.Write("22", 2);
    EXPECT_EQ(second.GetPosition(), 3);
    first.Seek(0, SeekOrigin::kBegin);
    first.Write("3", 1);
    EXPECT_EQ(first.GetPosition(), 4);
    first.Close();
    first.Close();
    EXPECT_THROW(first.Write("4", 1), ombrel::ombrel_exception);
    EXPECT_EQ(Contents(file), "1223");
}

TEST(ByteStreamTest, ClosingTellsOfWhatCouldNotBeStored)
{
    const File full("/dev/full");
    OPlatformByteStream stream(full, OpenMode::kWrite);
    try {
        stream.Write("text", 4);
        FAIL();
    } catch (const ombrel::ombrel_exception& error) {
        EXPECT_NE(std::string(error.what()).find("/dev/full"), std::string::npos);
        EXPECT_NE(std::string(error.what()).find("No space left"), std::string::npos);
    }
    EXPECT_FALSE(FileUtils::SimpleWriteStringToFile("/dev/full", "text"));
}

/// Random operations on a buffered stream against the same on a plain array of bytes.
TEST(ByteStreamTest, BufferedAccessEqualsAPlainArray)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        const File file(NewPath("model"), StorageType::kTemporary);
        OBufferedByteStream stream(file, OpenMode::kReadWrite, 1 + random() % 40);
        std::vector<char> model;
        std::size_t position = 0;
        for (int step = 0; step < 2000; ++step) {
            const std::size_t count = random() % 60;
            std::vector<char> data(count);
            switch (random() % 6) {
            case 0:
            case 1: {
                std::generate(data.begin(), data.end(), [&] { return static_cast<char>(random()); });
                stream.Write(data.data(), count);
                if (count > 0) {
                    model.resize(std::max(model.size(), position + count));
                    std::copy(data.begin(), data.end(),
                              model.begin() + static_cast<std::ptrdiff_t>(position));
                    position += count;
                }
                break;
            }
            case 2:
            case 3: {
                const auto expected = std::min(count, model.size() - std::min(position, model.size()));
                ASSERT_EQ(stream.Read(data.data(), count), expected);
                ASSERT_TRUE(std::equal(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(expected),
                                       model.begin() +
                                           static_cast<std::ptrdiff_t>(std::min(position, model.size()))));
                position += expected;
                break;
            }
            case 4:
                position = random() % (model.size() + 20);
                stream.Seek(static_cast<std::int64_t>(position) - static_cast<std::int64_t>(model.size()),
                            SeekOrigin::kEnd);
                break;
            default:
                if (random() % 10 == 0) {
                    model.resize(random() % (model.size() + 20));
                    stream.SetSize(static_cast<std::int64_t>(model.size()));
                } else {
                    stream.Flush();
                }
            }
            ASSERT_EQ(stream.GetPosition(), static_cast<std::int64_t>(position)) << seed << ":" << step;
            ASSERT_EQ(stream.GetSize(), static_cast<std::int64_t>(model.size())) << seed << ":" << step;
        }
        stream.Flush();
        ASSERT_EQ(Contents(file), std::string(model.begin(), model.end()));
    }
}

} // namespace
