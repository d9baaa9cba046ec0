#include <tessaro/buffering/AudioBuffer.h>
#include <tessaro/buffering/AudioBufferShell.h>
#include <tessaro/buffering/AudioSubBuffer.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <tessaro/buffering/AudioBufferHelpers.h>

#include "support/AllocationGuard.h"

namespace tessaro {

namespace {

using Mask = AudioBuffer::SilenceMask;

void Fill(AudioBuffer& ioBuffer, float inBase)
{
    for (std::size_t channel = 0; channel < ioBuffer.GetChannelCount(); ++channel) {
        for (unsigned i = 0; i < ioBuffer.GetBufferSize(); ++i) {
            ioBuffer[channel][i] = inBase + 100.0f * static_cast<float>(channel) + static_cast<float>(i);
        }
    }
}

TEST(AudioBufferTest, IsEmptyAndSilentBeforeInit)
{
    const AudioBuffer empty;
    const AudioBuffer sized(2, 0);
    for (const auto* buffer : {&empty, &sized}) {
        EXPECT_TRUE(buffer->IsZero());
        EXPECT_EQ(buffer->GetChannelZeroMask(), Mask(0));
        EXPECT_EQ(buffer->GetChannelCount(), 0u);
        EXPECT_EQ(buffer->GetFloatBuffers(), nullptr);
        EXPECT_EQ((*buffer)[0], nullptr);
        EXPECT_TRUE(buffer->GetBuffersAsFloats(3).empty());
    }
    const AudioBuffer copy(empty);
    EXPECT_EQ(copy.GetChannelZeroMask(), Mask(0));
}

TEST(AudioBufferTest, LaysOutAlignedRowsWithSlackThatNeverOverlap)
{
    for (const std::size_t channels : {1u, 2u, 3u, 8u, 65u}) {
        for (const unsigned size : {1u, 15u, 16u, 17u, 1000u}) {
            AudioBuffer buffer(channels, size);
            ASSERT_EQ(buffer.GetBufferSize(), size);
            const auto* behind = reinterpret_cast<const float*>(buffer.GetFloatBuffers() + channels);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                const auto start = reinterpret_cast<std::uintptr_t>(buffer.GetFloatBuffers());
                const auto unrounded = start + channels * 8 + (15 + channel * (size + 20)) * 4;
                ASSERT_EQ(reinterpret_cast<std::uintptr_t>(buffer[channel]), unrounded / 64 * 64);
                ASSERT_GE(buffer[channel], behind);
                behind = buffer[channel] + size + 4;
                std::fill_n(buffer[channel], size + 4, 1.0f); // the sanitizer sees an overrun of the block
            }
            EXPECT_EQ(buffer[channels], nullptr);
            EXPECT_EQ(buffer.GetChannelZeroMask(), ~Mask::Below(channels));
            EXPECT_FALSE(buffer.IsZero());
            EXPECT_EQ(buffer.GetBuffersAsFloats(5).back(), buffer[channels - 1] + 5);
            EXPECT_EQ(buffer.GetBuffersAsVoid(-1).back(), buffer[channels - 1] - 1);
        }
    }
}

TEST(AudioBufferTest, InitReusesItsBlockAndKeepsRowsApart)
{
    AudioBuffer buffer(4, 1000);
    {
        testing::AllocationGuard guard;
        buffer.Init(4, 100);
        EXPECT_EQ(buffer.GetCapacity(), 1000u);
        buffer.SetUseSize(1000);
        // The block has ((1000 + 16 + 4) * 4 + 8) * 4 bytes.
        buffer.Init(2, 100);
        EXPECT_EQ(buffer.GetCapacity(), ((16352 - 2 * 8) / 4) / 2 - 20);
        buffer.Init(0, 10);
        EXPECT_TRUE(buffer.IsZero());
        buffer.Init(3, 500);
        EXPECT_EQ(buffer.GetCapacity(), ((16352 - 3 * 8) / 4) / 3 - 20);
    }
    buffer.Init(4, 10);
    buffer.SetUseSize(buffer.GetCapacity());
    EXPECT_EQ(buffer.GetCapacity(), 1000u);
    Fill(buffer, 0.0f);
    for (std::size_t channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(buffer[channel][0], 100.0f * static_cast<float>(channel));
        EXPECT_EQ(buffer[channel][999], 100.0f * static_cast<float>(channel) + 999.0f);
    }
}

TEST(AudioBufferTest, StaysUsableWhenMemoryRunsOut)
{
    AudioBuffer buffer(2, 64);
    buffer.MarkChannelZero(0);
    EXPECT_THROW(buffer.Init(SIZE_MAX / 8, 4000000000u), std::bad_alloc);
    EXPECT_EQ(buffer.GetChannelZeroMask(), Mask(0));
    EXPECT_EQ(buffer[0], nullptr);
    buffer.Zero();
    buffer.Reverse();
    buffer.SetUseSize(64);
    AudioSubBuffer part;
    AudioBufferShell shell;
    EXPECT_THROW(part.Init(std::size_t{1} << 61), std::bad_alloc);
    EXPECT_THROW(shell.Init(std::size_t{1} << 61), std::bad_alloc);
    part.Assign(buffer, 0);         // nothing to point anywhere
    testing::AllocationGuard guard; // the block is still there
    buffer.Init(2, 64);
    EXPECT_NE(buffer[1], nullptr);
    EXPECT_EQ(buffer.GetBufferSize(), 64u);
}

TEST(AudioBufferTest, UseSizeGrowsWithSamplesAndFlagsUnlessItIsZero)
{
    AudioBuffer buffer(3, 8);
    Fill(buffer, 1.0f);
    buffer.MarkChannelZero(1);
    buffer.SetUseSize(4);
    EXPECT_TRUE(buffer.IsChannelZero(1));
    buffer.SetUseSize(500);
    EXPECT_EQ(buffer.GetBufferSize(), 500u);
    EXPECT_EQ(buffer[0][3], 4.0f);
    EXPECT_EQ(buffer[2][3], 204.0f);
    EXPECT_TRUE(buffer.IsChannelZero(1));
    EXPECT_EQ(buffer.GetChannelZeroMask(), ~Mask::Below(3) | Mask::Bit(1));

    buffer.Zero();
    buffer.SetUseSize(2000);
    EXPECT_TRUE(buffer.IsZero());
    EXPECT_EQ(buffer[2][1999], 0.0f);

    buffer.SetUseSize(0);
    buffer.SetUseSize(5000);
    EXPECT_EQ(buffer.GetBufferSize(), buffer.GetCapacity());
    EXPECT_EQ(buffer.GetCapacity(), 2000u);
}

TEST(AudioBufferTest, CopyConstructionCopiesSilentSamplesAndTheMask)
{
    AudioBuffer source(2, 10);
    Fill(source, 1.0f);
    source.MarkChannelZero(0);
    const AudioBuffer copy(source);
    EXPECT_EQ(copy.GetChannelZeroMask(), source.GetChannelZeroMask());
    EXPECT_NE(copy[0], source[0]);
    EXPECT_EQ(copy[0][9], 10.0f);
    EXPECT_EQ(copy[1][9], 110.0f);
}

TEST(AudioBufferTest, MarksNeverTouchSamplesOrTheBitsAboveTheChannels)
{
    AudioBuffer buffer(2, 4);
    Fill(buffer, 1.0f);
    const auto none = ~Mask::Below(2);
    buffer.MarkChannelZero(7);
    EXPECT_EQ(buffer.GetChannelZeroMask(), none);
    buffer.MarkChannelsZero(Mask::Bit(0));
    buffer.MarkChannelsZero(Mask::Bit(1));
    EXPECT_TRUE(buffer.IsZero());
    EXPECT_EQ(buffer.GetChannelZeroMask(), Mask::All());
    buffer.ClearChannelsZero(Mask::All());
    EXPECT_EQ(buffer.GetChannelZeroMask(), none);
    buffer.SetChannelZero(1, true);
    buffer.ClearChannelZero(9);
    EXPECT_EQ(buffer.GetChannelZeroMask(), none | Mask::Bit(1));
    buffer.ClearZeroFlags();
    EXPECT_EQ(buffer.GetChannelZeroMask(), none);
    EXPECT_EQ(buffer[0][0], 1.0f);
    buffer.Zero();
    EXPECT_EQ(buffer.GetChannelZeroMask(), Mask::All());
}

TEST(AudioBufferTest, ChannelsFrom64UpHaveNoFlag)
{
    AudioBuffer buffer(66, 4);
    Fill(buffer, 1.0f);
    buffer.MarkChannelZero(65);
    EXPECT_FALSE(buffer.IsChannelZero(65));
    buffer.MarkChannelsZero(Mask::All());
    EXPECT_TRUE(buffer.IsZero());
    EXPECT_FALSE(buffer.IsChannelZero(64));

    AudioBuffer dest(66, 4);
    buffer.ClearZeroFlags();
    dest.CopyCertainChannelsFrom(buffer, 4, Mask::Bit(1));
    EXPECT_TRUE(dest.IsChannelZero(0));
    EXPECT_FALSE(dest.IsChannelZero(1));
    EXPECT_EQ(dest[1][2], buffer[1][2]);
    EXPECT_EQ(dest[64][2], 0.0f); // goes by bit 0
    EXPECT_EQ(dest[65][2], buffer[65][2]);
}

TEST(AudioBufferTest, ZeroWritesOnlyWhatIsNotSilentYet)
{
    AudioBuffer buffer(2, 4);
    Fill(buffer, 1.0f);
    buffer.MarkChannelZero(0);
    buffer.Zero();
    EXPECT_EQ(buffer[0][0], 1.0f);
    EXPECT_EQ(buffer[1][0], 0.0f);
    buffer.ZeroBuffers();
    EXPECT_EQ(buffer[0][0], 0.0f);

    buffer.ClearZeroFlags();
    Fill(buffer, 1.0f);
    buffer.ZeroChannel(0, 2, false);
    EXPECT_FALSE(buffer.IsChannelZero(0));
    EXPECT_EQ(buffer[0][1], 0.0f);
    EXPECT_EQ(buffer[0][2], 3.0f);
    buffer.ZeroChannel(0, 1, true);
    EXPECT_TRUE(buffer.IsChannelZero(0));
    EXPECT_EQ(buffer[0][2], 3.0f);
    buffer.ZeroChannel(0, 99, false); // silent already
    EXPECT_EQ(buffer[0][2], 3.0f);
    buffer.ZeroChannel(2, 4, true);
}

TEST(AudioBufferTest, CopyOfOneRowOntoItselfOnlyClearsTheFlag)
{
    AudioBuffer buffer(2, 4);
    Fill(buffer, 1.0f);
    buffer.CopyChannel(0, 0);
    EXPECT_EQ(buffer[0][3], 4.0f);
    EXPECT_FALSE(buffer.IsChannelZero(0));
    buffer.CopyChannel(7, 1);
    EXPECT_TRUE(buffer.IsChannelZero(1));
    EXPECT_EQ(buffer[1][0], 0.0f);
}

/// A buffer as its readers see it: silence is zeros.
struct Model
{
    std::vector<std::vector<float>> mRows;

    explicit Model(const AudioBuffer& inBuffer)
    {
        for (std::size_t channel = 0; channel < inBuffer.GetChannelCount(); ++channel) {
            mRows.emplace_back(inBuffer.GetBufferSize());
            if (!inBuffer.IsChannelZero(channel)) {
                std::copy_n(inBuffer[channel], inBuffer.GetBufferSize(), mRows.back().begin());
            }
        }
    }
    bool operator==(const Model&) const = default;

    void Copy(const Model& inSource, const AudioBuffer& inFlags, unsigned inCount, const Mask& inChannels)
    {
        for (std::size_t channel = 0; channel < mRows.size(); ++channel) {
            auto& row = mRows[channel];
            if (channel >= inSource.mRows.size() || inFlags.IsChannelZero(channel) ||
                !inChannels.GetBit(channel)) {
                std::fill(row.begin(), row.end(), 0.0f);
            } else {
                const auto& source = inSource.mRows[channel];
                std::copy_n(source.begin(), std::min<std::size_t>({inCount, row.size(), source.size()}),
                            row.begin());
            }
        }
    }
    template <typename Function>
    void Combine(const Model& inSource, Function inFunction)
    {
        for (std::size_t channel = 0; channel < std::min(mRows.size(), inSource.mRows.size()); ++channel) {
            auto& row = mRows[channel];
            for (std::size_t i = 0; i < std::min(row.size(), inSource.mRows[channel].size()); ++i) {
                row[i] = inFunction(row[i], inSource.mRows[channel][i]);
            }
        }
    }
};

class AudioBufferModelTest : public ::testing::Test
{
protected:
    unsigned Pick(unsigned inBelow) { return static_cast<unsigned>(mRandom() % inBelow); }

    void Write(AudioBuffer& ioBuffer)
    {
        const auto channel = Pick(static_cast<unsigned>(ioBuffer.GetChannelCount()));
        for (unsigned i = 0; i < ioBuffer.GetBufferSize(); ++i) {
            ioBuffer[channel][i] = static_cast<float>(Pick(64)); // sums and halves stay exact
        }
        ioBuffer.ClearChannelZero(channel);
    }

    /// Applies one random operation to both and compares.
    void Step(AudioBuffer& ioBuffer, const AudioBuffer& inSource);

    std::mt19937 mRandom{20};
};

void AudioBufferModelTest::Step(AudioBuffer& ioBuffer, const AudioBuffer& inSource)
{
    Model model(ioBuffer);
    const Model source(inSource);
    const auto channel = Pick(4);
    const auto count = Pick(24);
    const auto operation = Pick(11);
    switch (operation) {
    case 0:
        ioBuffer.CopyFrom(inSource, count);
        model.Copy(source, inSource, count, Mask::All());
        break;
    case 1:
        ioBuffer.CopyFrom(inSource, std::size_t{5}, count);
        model.Copy(source, inSource, count, Mask::All());
        break;
    case 2:
        ioBuffer.CopyCertainChannelsFrom(inSource, count, Mask(channel));
        model.Copy(source, inSource, count, Mask(channel));
        break;
    case 3:
        ioBuffer.Mix(inSource);
        model.Combine(source, [](float inA, float inB) { return inA + inB; });
        break;
    case 4:
        ioBuffer.CopyFromScale(inSource, 0.5f);
        model.Copy(source, inSource, 99, Mask::All());
        model.Combine(source, [](float, float inB) { return inB * 0.5f; });
        break;
    case 5:
        ioBuffer.ZeroChannel(channel, count, false);
        if (channel < model.mRows.size()) {
            auto& row = model.mRows[channel];
            std::fill_n(row.begin(), std::min<std::size_t>(count, row.size()), 0.0f);
        }
        break;
    case 6:
        ioBuffer.Reverse();
        for (auto& row : model.mRows) {
            std::reverse(row.begin(), row.end());
        }
        break;
    case 7:
        ioBuffer *= 0.5f;
        model.Combine(Model(model), [](float inA, float) { return inA * 0.5f; });
        break;
    case 8:
        ioBuffer.CopyChannel(inSource, channel, 0);
        EXPECT_EQ(ioBuffer.IsChannelZero(0),
                  channel >= inSource.GetChannelCount() || inSource.IsChannelZero(channel));
        if (!ioBuffer.IsChannelZero(0)) {
            const auto& row = source.mRows[channel];
            std::copy_n(row.begin(), std::min(row.size(), model.mRows[0].size()), model.mRows[0].begin());
        } else {
            std::fill(model.mRows[0].begin(), model.mRows[0].end(), 0.0f);
        }
        break;
    case 9:
        ioBuffer.CopyFromScale(inSource, 1.0f);
        model.Copy(source, inSource, 99, Mask::All());
        break;
    default:
        ioBuffer.MarkChannelZero(channel);
        if (channel < model.mRows.size()) {
            std::fill(model.mRows[channel].begin(), model.mRows[channel].end(), 0.0f);
        }
    }
    ASSERT_EQ(Model(ioBuffer), model) << "operation " << operation;
    ASSERT_TRUE(ioBuffer.GetChannelZeroMask().AreAllSet(~Mask::Below(ioBuffer.GetChannelCount())));
}

TEST_F(AudioBufferModelTest, AnySequenceOfOperationsReadsAsOnPlainRowsWhereSilenceIsZeros)
{
    for (int run = 0; run < 400 && !HasFatalFailure(); ++run) {
        AudioBuffer first(1 + Pick(3), 1 + Pick(20));
        AudioBuffer second(1 + Pick(3), 1 + Pick(20));
        first.ZeroBuffers();
        second.ZeroBuffers();
        for (int step = 0; step < 40 && !HasFatalFailure(); ++step) {
            Write(Pick(2) != 0 ? first : second);
            Pick(2) != 0 ? Step(first, second) : Step(second, first);
        }
    }
}

TEST(AudioBufferTest, OperationsDoNotAllocate)
{
    const testing::AllocationCounter counter;
    ::operator delete(::operator new(8)); // a call that the compiler may not leave out
    ASSERT_EQ(counter.GetAllocations(), 1u);
    ASSERT_EQ(counter.GetFrees(), 1u);

    AudioBuffer buffer(3, 64);
    AudioBuffer source(4, 80);
    Fill(buffer, 0.0f);
    Fill(source, 0.0f);
    source.MarkChannelZero(1);
    testing::AllocationGuard guard;
    buffer.CopyFrom(source);
    buffer.Mix(source);
    buffer.CopyFromScale(source, 0.25f);
    buffer.CopyCertainChannelsFrom(source, 7, Mask(5));
    buffer.CopyChannel(0, 2);
    buffer.Reverse();
    buffer *= 2.0f;
    buffer.SetUseSize(10);
    buffer.Zero();
    ZeroBufferAccordingToSilenceFlags(buffer);
}

TEST(AudioBufferTest, SilenceCostsNoPassOverSamples)
{
    AudioBuffer dest(2, 4);
    AudioBuffer source(2, 4);
    Fill(dest, 1.0f);
    Fill(source, 50.0f);
    dest.MarkChannelsZero(Mask::All());
    source.MarkChannelsZero(Mask::All());
    dest.CopyFrom(source);
    dest.CopyFrom(source, 2);
    dest.CopyFromScale(source, 0.5f);
    dest.Mix(source);
    dest.Reverse();
    dest *= 0.0f;
    dest.Zero();
    EXPECT_EQ(dest[1][3], 104.0f);
    dest.ClearZeroFlags();
    dest *= 0.0f;
    EXPECT_FALSE(dest.IsZero());
    EXPECT_EQ(dest[1][3], 0.0f);
}

TEST(AudioBufferTest, LeavesTheWorldOfFlagsAsZeros)
{
    AudioBuffer buffer(2, 5);
    for (const std::size_t silent : {0u, 1u}) {
        buffer.ClearZeroFlags();
        Fill(buffer, 1.0f);
        buffer.MarkChannelZero(silent);
        const auto memory = GetAudioBufferMemory(buffer);
        ASSERT_EQ(memory->GetSize(), 2 * 5 * sizeof(float));
        const auto* samples = memory->BufferAs<float>();
        EXPECT_TRUE(std::all_of(samples + 5 * silent, samples + 5 * silent + 5,
                                [](float inSample) { return inSample == 0.0f; }));
        EXPECT_EQ(samples[5 * (1 - silent) + 4], buffer[1 - silent][4]);
    }
    ZeroBufferAccordingToSilenceFlags(buffer, 1);
    EXPECT_NE(buffer[1][0], 0.0f);
    ZeroBufferAccordingToSilenceFlags(buffer);
    EXPECT_EQ(buffer[1][0], 0.0f);
    EXPECT_EQ(buffer[0][0], 1.0f);
    EXPECT_TRUE(buffer.IsChannelZero(1));
}

} // namespace

} // namespace tessaro
