#include <brisken/utility/Compare.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Compare.cpp"
#include <hwy/foreach_target.h>

#include "utility/Order-inl.h"
#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

struct FirstIfGreater : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inB) const
    {
        return Greater(inA, inB);
    }
};

struct RaisedTo : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inLevel) const
    {
        return Greater(inLevel, inA);
    }
};

struct LoweredTo : ElementOp
{
    template <class V>
    HWY_INLINE V operator()(V inA, V inLevel) const
    {
        return Smaller(inLevel, inA);
    }
};

template <class T>
struct TrimStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t i) const
    {
        return Smaller(hn::Set(d, inHigh), Greater(hn::Set(d, inLow), hn::LoadU(d, io + i)));
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, io + i);
    }

    T* io;
    T inLow;
    T inHigh;
};

template <class T>
void TrimRow(unsigned inCount, T* io, T inLow, T inHigh)
{
    RunRow(hn::ScalableTag<T>(), inCount, TrimStep<T>{io, inLow, inHigh});
}

constexpr auto& MaxEveryF32 = BinaryRow<FirstIfGreater, float>;
constexpr auto& MaxEveryF64 = BinaryRow<FirstIfGreater, double>;
constexpr auto& ThresholdLTF32 = ConstantRow<RaisedTo, float>;
constexpr auto& ThresholdLTF64 = ConstantRow<RaisedTo, double>;
constexpr auto& ThresholdGTF32 = ConstantRow<LoweredTo, float>;
constexpr auto& ThresholdGTF64 = ConstantRow<LoweredTo, double>;
constexpr auto& TrimF32 = TrimRow<float>;
constexpr auto& TrimF64 = TrimRow<double>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "utility/Exports.h"

namespace brisken::utility {

HWY_EXPORT(MaxEveryF32);
HWY_EXPORT(MaxEveryF64);
HWY_EXPORT(ThresholdLTF32);
HWY_EXPORT(ThresholdLTF64);
HWY_EXPORT(ThresholdGTF32);
HWY_EXPORT(ThresholdGTF64);
HWY_EXPORT(TrimF32);
HWY_EXPORT(TrimF64);

BRISKEN_BINARY_IN_PLACE(MaxEvery_InPlace, float, MaxEveryF32)
BRISKEN_BINARY_IN_PLACE(MaxEvery_InPlace, double, MaxEveryF64)
BRISKEN_CONSTANT_IN_PLACE(Threshold_LT_InPlace, float, ThresholdLTF32)
BRISKEN_CONSTANT_IN_PLACE(Threshold_LT_InPlace, double, ThresholdLTF64)
BRISKEN_CONSTANT_IN_PLACE(Threshold_GT_InPlace, float, ThresholdGTF32)
BRISKEN_CONSTANT_IN_PLACE(Threshold_GT_InPlace, double, ThresholdGTF64)

void Trim(unsigned inCount, float* io, float inLow, float inHigh)
{
    BRISKEN_DISPATCH(TrimF32)(inCount, io, inLow, inHigh);
}

void Trim(unsigned inCount, double* io, double inLow, double inHigh)
{
    BRISKEN_DISPATCH(TrimF64)(inCount, io, inLow, inHigh);
}

} // namespace brisken::utility

#endif // HWY_ONCE
