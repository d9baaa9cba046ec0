#pragma once

#include <tessaro/filters/SectionCoefficients.h>

/// Rows through a section in place, coefficients and state held in registers. The recursion runs in `T`; only
/// what is stored is rounded to `Sample`.
namespace tessaro::kernels {

template <typename T, typename Sample>
void FirstOrderRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow,
                   int inCount);

template <typename T, typename Sample>
void DirectRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow, int inCount);

template <typename T, typename Sample>
void CoupledRow(const SectionCoefficients<T>& inSection, FilterState<T>& ioState, Sample* ioRow, int inCount);

} // namespace tessaro::kernels
