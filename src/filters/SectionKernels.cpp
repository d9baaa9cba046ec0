#include "filters/SectionKernels.h"

namespace tessaro::kernels {

template <typename T, typename Sample>
void FirstOrderRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow,
                   int inCount)
{
    const T b0 = inSection.b0, b1 = inSection.b1, a1 = inSection.a1;
    T x1 = ioState.mInput1;
    T y1 = ioState.mOutput1;
    for (int n = 0; n < inCount; ++n) {
        const T x = static_cast<T>(ioRow[n]);
        y1 = (b0 * x + b1 * x1) - a1 * y1;
        x1 = x;
        ioRow[n] = static_cast<Sample>(y1);
    }
    ioState.mInput1 = x1;
    ioState.mOutput1 = y1;
}

template <typename T, typename Sample>
void DirectRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow, int inCount)
{
    const T b0 = inSection.b0, b1 = inSection.b1, b2 = inSection.b2, a1 = inSection.a1, a2 = inSection.a2;
    T x1 = ioState.mInput1, x2 = ioState.mInput2;
    T y1 = ioState.mOutput1, y2 = ioState.mOutput2;
    for (int n = 0; n < inCount; ++n) {
        const T x = static_cast<T>(ioRow[n]);
        // The newest output, on which the chain of samples hangs, comes in last.
        const T y = ((b0 * x + b1 * x1 + b2 * x2) - a2 * y2) - a1 * y1;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        ioRow[n] = static_cast<Sample>(y);
    }
    ioState.mInput1 = x1;
    ioState.mInput2 = x2;
    ioState.mOutput1 = y1;
    ioState.mOutput2 = y2;
}

template <typename T, typename Sample>
void CoupledRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow, int inCount)
{
    const auto section = inSection;
    T s1 = ioState.mInput1, s2 = ioState.mInput2;
    for (int n = 0; n < inCount; ++n) {
        const T x = static_cast<T>(ioRow[n]);
        const T y = section.C1 * s1 + section.C2 * s2 + section.D * x;
        const T next1 = section.A11 * s1 + section.A12 * s2 + section.B1 * x;
        s2 = section.A21 * s1 + section.A22 * s2 + section.B2 * x;
        s1 = next1;
        ioRow[n] = static_cast<Sample>(y);
    }
    ioState.mInput1 = s1;
    ioState.mInput2 = s2;
}

#define TESSARO_INSTANTIATE(T, SAMPLE)                                                                       \
    template void FirstOrderRow(const SectionCoefficients<T>&, FilterState<T>&, SAMPLE*, int);               \
    template void DirectRow(const SectionCoefficients<T>&, FilterState<T>&, SAMPLE*, int);                   \
    template void CoupledRow(const SectionCoefficients<T>&, FilterState<T>&, SAMPLE*, int)

TESSARO_INSTANTIATE(float, float);
TESSARO_INSTANTIATE(float, double);
TESSARO_INSTANTIATE(double, float);
TESSARO_INSTANTIATE(double, double);

#undef TESSARO_INSTANTIATE

} // namespace tessaro::kernels
