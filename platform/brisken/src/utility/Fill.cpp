#include <brisken/utility/Fill.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "utility/Fill.cpp"
#include <hwy/foreach_target.h>

#include "utility/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::utility::HWY_NAMESPACE {

template <class T>
struct SetStep
{
    static constexpr std::size_t kMinLanes = 1;

    template <class D>
    HWY_INLINE auto Compute(D d, std::size_t) const
    {
        return hn::Set(d, inValue);
    }

    template <class D, class V>
    HWY_INLINE void Store(D d, std::size_t i, V inResult) const
    {
        hn::StoreU(inResult, d, out + i);
    }

    T inValue;
    T* out;
};

template <class T>
void SetRow(unsigned inCount, T inValue, T* out)
{
    RunRow(hn::ScalableTag<T>(), inCount, SetStep<T>{inValue, out});
}

constexpr auto& SetF32 = SetRow<float>;
constexpr auto& SetF64 = SetRow<double>;
constexpr auto& SetU32 = SetRow<unsigned>;

} // namespace brisken::utility::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <cstring>

#include "Dispatch.h"

namespace brisken::utility {

HWY_EXPORT(SetF32);
HWY_EXPORT(SetF64);
HWY_EXPORT(SetU32);

void Zero(unsigned inCount, float* out)
{
    BRISKEN_DISPATCH(SetF32)(inCount, 0.0f, out);
}
void Zero(unsigned inCount, double* out)
{
    BRISKEN_DISPATCH(SetF64)(inCount, 0.0, out);
}
void Zero(unsigned inCount, unsigned int* out)
{
    BRISKEN_DISPATCH(SetU32)(inCount, 0, out);
}
void Zero(unsigned inCount, unsigned char* out)
{
    if (inCount != 0) {
        std::memset(out, 0, inCount);
    }
}

void Set(unsigned inCount, float* out, float inValue)
{
    BRISKEN_DISPATCH(SetF32)(inCount, inValue, out);
}
void Set(unsigned inCount, double* out, double inValue)
{
    BRISKEN_DISPATCH(SetF64)(inCount, inValue, out);
}
void Set(unsigned inCount, unsigned int* out, unsigned int inValue)
{
    BRISKEN_DISPATCH(SetU32)(inCount, inValue, out);
}

} // namespace brisken::utility

#endif // HWY_ONCE
