#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <ombrel/allocator/STLAllocator.h>
#include <tessaro/Export.h>

namespace tessaro::waveform {

class WaveformChannelScaleFactor;
class WaveformScaleFactor;

enum class WaveformDataType
{
    kNone = 0,    ///< no data
    kSamples = 1, ///< a slot is one sample value
    kPeaks = 2    ///< a slot is the least and the greatest value of a stretch of samples
};

/// What shape waveform data has. A data slot is one place on the time axis of a channel: one float of
/// samples, two of peaks.
class WaveformDataProperties
{
public:
    WaveformDataProperties() = default;
    WaveformDataProperties(WaveformDataType inType, std::uint64_t inDataSlots, std::uint64_t inChannelCount)
        : mType(inType), mDataSlots(inDataSlots), mChannelCount(inChannelCount)
    {
    }

    [[nodiscard]] WaveformDataType GetType() const { return mType; }
    /// The lower 32 bits of what is stored.
    [[nodiscard]] std::uint32_t GetDataSlots() const { return static_cast<std::uint32_t>(mDataSlots); }
    [[nodiscard]] std::size_t GetChannelCount() const { return mChannelCount; }

private:
    friend class WaveformData;

    WaveformDataType mType = WaveformDataType::kNone;
    std::uint64_t mDataSlots = 0;
    std::uint64_t mChannelCount = 0;
};

/// The extremes of one slot of peak data.
struct WaveformPeakValue
{
    float mMin = 0.0f;
    float mMax = 0.0f;
};

/// A note on a stretch of the data, from whoever produced it; what the type and the unit of the ends mean is
/// theirs to say.
class WaveformBufferAnnotation
{
public:
    WaveformBufferAnnotation(std::int32_t inType, std::uint64_t inStart, std::uint64_t inEnd)
        : mType(inType), mStart(inStart), mEnd(inEnd)
    {
    }

    [[nodiscard]] std::int32_t GetType() const { return mType; }
    [[nodiscard]] std::uint64_t GetStart() const { return mStart; }
    [[nodiscard]] std::uint64_t GetEnd() const { return mEnd; }

private:
    std::int32_t mType;
    std::uint64_t mStart;
    std::uint64_t mEnd;
};

/// One block of a clip's sound for drawing code and scripts, for several channels: plain samples, or the
/// least and greatest value of each stretch.
///
/// A producer sizes the block by properties and fills it, value by value or through
/// `RecycleWaveformBuffer`, which reuses one block from draw to draw; `ApplyScaling` makes it follow the
/// clip's gain without reading the audio again. From then on it is shared by `std::shared_ptr` and only read.
///
/// The buffer holds the channels one after the other, `GetSizePerChannel` floats each. A slot of peaks is two
/// floats, the greatest value first; `WaveformPeakValue` has them the other way round. The buffer may be
/// longer than its channels need, never read and, but for `Add` and `Reverse`, never written behind them.
///
/// Places that do not exist are no faults: getters answer 0 and the rest leaves the data alone. No
/// synchronisation: one thread at a time, or several that only read. Not for real-time threads where memory
/// is taken: in constructors, copies, `RecycleWaveformBuffer`, `AddAnnotation` and `GetAnnotations`, which
/// throw when it runs out; nothing else throws.
class TESSARO_EXPORT WaveformData
{
public:
    using Buffer = std::vector<float, ombrel::allocator::STLAllocator<float>>;
    using Annotations =
        std::vector<WaveformBufferAnnotation, ombrel::allocator::STLAllocator<WaveformBufferAnnotation>>;

    /// As the end of a range of slots: the end of the channel.
    static constexpr std::size_t kToEnd = ~std::size_t{0};

    /// Empty, of no type
    WaveformData();
    /// All zeros
    explicit WaveformData(const WaveformDataProperties& inProperties);
    /// Takes the buffer over. The slots are what it holds for each channel, rounded down; `inChannelCount` is
    /// at least 1.
    WaveformData(Buffer&& ioBuffer, WaveformDataType inType, std::size_t inChannelCount);
    WaveformData(const WaveformData&);
    WaveformData(WaveformData&&) noexcept;
    WaveformData& operator=(const WaveformData&);
    WaveformData& operator=(WaveformData&&) noexcept;
    ~WaveformData();

    [[nodiscard]] std::size_t GetChannelCount() const { return mChannelCount; }
    [[nodiscard]] std::uint32_t GetDataSlots() const { return static_cast<std::uint32_t>(mDataSlots); }
    [[nodiscard]] WaveformDataProperties GetProperties() const;
    /// In floats: 0 for no type, the slots for samples, twice the slots for peaks
    [[nodiscard]] std::size_t GetSizePerChannel() const { return mDataSlots * GetFloatsPerSlot(); }
    [[nodiscard]] WaveformDataType GetType() const { return mType; }
    [[nodiscard]] const Buffer& GetWaveformBuffer() const { return mBuffer; }

    [[nodiscard]] Annotations GetAnnotations() const { return mAnnotations; }
    void AddAnnotation(const WaveformBufferAnnotation& inAnnotation) { mAnnotations.push_back(inAnnotation); }

    /// No type, slots and channels from here on. The buffer keeps what it holds, and the getters below read
    /// it; annotations stay, too.
    void Clear();

    /// Changes what the data is taken for, not the data. The buffer should hold enough for the new type.
    void ConvertToWaveformDataType(WaveformDataType inType) { mType = inType; }

    /// Takes new properties and hands out the buffer for filling. It grows where it is too short, with zeros,
    /// and never shrinks, except to nothing for 0 channels or slots; what it holds is left from before.
    /// Annotations stay.
    Buffer& RecycleWaveformBuffer(const WaveformDataProperties& inProperties);

    /// The value of a slot of samples. Bounded by the end of the buffer only: behind a channel's last slot
    /// begins the next channel. 0 past the end.
    [[nodiscard]] float GetWaveformSample(std::size_t inChannel, std::size_t inSlot) const;
    void SetWaveformSample(std::size_t inChannel, std::size_t inSlot, const float& inValue);

    /// The pair of a slot of peaks, bounded in the same way. Zeros past the end.
    [[nodiscard]] WaveformPeakValue GetWaveformPeakValue(std::size_t inChannel, std::size_t inSlot) const;
    void SetWaveformPeakValue(std::size_t inChannel, std::size_t inSlot, const WaveformPeakValue& inValue);

    /// Adds the other buffer into this one, element by element over the shorter of them. Only for data of
    /// the same type, slots and channels; else, and for null, does nothing. The other may be this.
    void Add(const std::shared_ptr<WaveformData>& inOther);

    /// Copies as many slots as there are from both offsets, which count slots, to the ends of the channels.
    /// Nothing is copied from null, from another type, or where a channel does not exist. The source may be
    /// this data, and the ranges may overlap.
    void CopyChannel(const std::shared_ptr<WaveformData>& inSource, std::size_t inSourceChannel,
                     std::size_t inDestChannel, std::size_t inSourceOffset, std::size_t inDestOffset);

    /// Sets the slots from `inStart` up to, without, `inEnd` to 0.
    void ZeroChannel(std::size_t inChannel, std::size_t inStart, std::size_t inEnd);

    /// Multiplies the slots from `inStart` up to, without, `inEnd`. A factor for each slot begins at
    /// `inStart`; where it is shorter than the range, the rest stays as it is. The pair of a slot of peaks
    /// keeps its order, below 0, too.
    void ApplyScaling(const WaveformChannelScaleFactor& inFactor, std::size_t inChannel, std::size_t inStart,
                      std::size_t inEnd);
    /// Multiplies each whole channel by its factor, or by the first one if it has none of its own.
    void ApplyScaling(const WaveformScaleFactor& inFactor);

    /// Reverses the whole buffer, not channel by channel: of several channels, the last comes first. Pairs
    /// of peaks stay as they are. Data of no type is left alone.
    void Reverse();

private:
    /// A part of the buffer, in floats
    struct Range
    {
        std::size_t mStart;
        std::size_t mCount;
    };

    [[nodiscard]] std::size_t GetFloatsPerSlot() const;
    void SetProperties(const WaveformDataProperties& inProperties);
    /// Where `inFloats` floats from a slot on begin; the end of the buffer if they are not all in it.
    [[nodiscard]] std::size_t FindPlace(std::size_t inChannel, std::size_t inSlot,
                                        std::size_t inFloats) const;
    /// Clamped to the channel and to the buffer; empty for a channel that does not exist.
    [[nodiscard]] Range FindRange(std::size_t inChannel, std::size_t inStart, std::size_t inEnd) const;

    Buffer mBuffer;
    WaveformDataType mType = WaveformDataType::kNone;
    std::uint64_t mDataSlots = 0;
    std::uint64_t mChannelCount = 0;
    Annotations mAnnotations;
};

} // namespace tessaro::waveform
