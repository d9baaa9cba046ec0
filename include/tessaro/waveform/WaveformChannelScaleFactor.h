#pragma once

#include <cstddef>
#include <vector>

#include <ombrel/allocator/STLAllocator.h>
#include <tessaro/Export.h>

namespace tessaro::waveform {

enum class WaveformScaleFactorType
{
    kNone = 0,     ///< changes nothing
    kConstant = 1, ///< one factor for all slots
    kDynamic = 2   ///< a factor for each slot
};

/// Which of the two ways of combining factors.
enum class OperatorType
{
    kMultiply,
    kDivide
};

/// The gain, linear, that a channel of waveform data is to be drawn with: none, constant, or one factor for
/// each slot. Factors are combined with `*=` and `/=`, which use up the right side, and applied by
/// `WaveformData::ApplyScaling`.
///
/// Moved, not copied; a moved-from factor may be assigned to. One thread at a time. `[any thread]` and free
/// of allocation, except for a division by a dynamic factor, which throws when memory runs out.
class TESSARO_EXPORT WaveformChannelScaleFactor
{
public:
    using ScaleVector = std::vector<float, ombrel::allocator::STLAllocator<float>>;

    /// None for exactly 1, else constant, for NaN, too.
    explicit WaveformChannelScaleFactor(float inScale);
    /// Dynamic, of any length.
    explicit WaveformChannelScaleFactor(ScaleVector&& ioScales);
    WaveformChannelScaleFactor(WaveformChannelScaleFactor&&) noexcept;
    WaveformChannelScaleFactor& operator=(WaveformChannelScaleFactor&&) noexcept;
    ~WaveformChannelScaleFactor();

    [[nodiscard]] WaveformScaleFactorType GetType() const { return mType; }
    /// 1 unless the factor is constant
    [[nodiscard]] float GetConstantScale() const { return mConstantScale; }
    /// Length of the scale vector, 0 unless the factor is dynamic
    [[nodiscard]] std::size_t GetSize() const { return mScaleVector.size(); }
    [[nodiscard]] const ScaleVector& GetWaveformScaleVector() const { return mScaleVector; }

    /// The same type with the same constant or the same vector; NaN is unlike itself. Throws
    /// `ombrel_exception` for a factor whose type is none of the enumeration.
    [[nodiscard]] bool operator==(const WaveformChannelScaleFactor& inOther) const;

    /// Multiplies by a factor. A constant one and a dynamic one give a dynamic one, in either order. Of two
    /// dynamic ones the shorter length counts: what this one has beyond it stays. A dynamic factor of no
    /// length stays what it is. A product of constants stays constant even where it is 1.
    WaveformChannelScaleFactor& operator*=(WaveformChannelScaleFactor&& ioOther);

    /// Divides by a factor, in the same way, with the length of a dynamic right side where this one is not
    /// dynamic. Two constants are multiplied here, as by `*=`; callers rely on it.
    WaveformChannelScaleFactor& operator/=(WaveformChannelScaleFactor&& ioOther);

private:
    void MulDiv(WaveformChannelScaleFactor&& ioOther, OperatorType inOperator);
    void MulDivByConstant(float inConstant, OperatorType inOperator);
    void MulDivByDynamic(WaveformChannelScaleFactor&& ioOther, OperatorType inOperator);

    WaveformScaleFactorType mType;
    float mConstantScale;
    ScaleVector mScaleVector;
};

} // namespace tessaro::waveform
