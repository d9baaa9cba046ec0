#include "filter/IIRKernel.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filter/IIRKernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace brisken::filter::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<double, kMostLookAhead>;

/// Value `inBack` samples before sample `inIndex` of the row `inRow`, whose past is `inPast`.
HWY_INLINE double Before(const double* HWY_RESTRICT inRow, std::size_t inIndex, std::size_t inBack,
                         const SectionPast& inPast)
{
    return inIndex >= inBack ? inRow[inIndex - inBack] : inPast[kSectionPast + inIndex - inBack];
}

void PlainRow(const LookAheadForm& inForm, const double* HWY_RESTRICT inSource, std::size_t inCount,
              const SectionPast& inPast, double* HWY_RESTRICT outDest)
{
    for (std::size_t n = 0; n < inCount; ++n) {
        const auto* x = inSource + n;
        const auto feed = inForm.mFeed[0] * x[0] + inForm.mFeed[1] * *(x - 1) + inForm.mFeed[2] * *(x - 2);
        outDest[n] = (feed - inForm.mBack2 * Before(outDest, n, 2, inPast)) -
                     inForm.mBack1 * Before(outDest, n, 1, inPast);
    }
}

/// As many samples at a time as there are lanes. What a sample needs of the output lies a whole vector back,
/// so the only chain from one vector to the next is a single multiply-add.
void Section(const SectionForms& inForms, const double* HWY_RESTRICT inSource, std::size_t inCount,
             std::size_t inPlain, const SectionPast& inPast, double* HWY_RESTRICT outDest)
{
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const auto& form = inForms[lanes / 2];
    PlainRow(inForms[0], inSource, inPlain, inPast, outDest);

    HWY_ALIGN double past[kSectionPast];
    for (std::size_t i = 0; i < kSectionPast; ++i) {
        past[i] = Before(outDest, inPlain, kSectionPast - i, inPast);
    }
    auto back2 = hn::LoadU(d, past + kSectionPast - 2 * lanes);
    auto back1 = hn::LoadU(d, past + kSectionPast - lanes);
    const auto backTap1 = hn::Set(d, form.mBack1);
    const auto backTap2 = hn::Set(d, form.mBack2);
    const auto tap0 = hn::Set(d, form.mFeed[0]);
    const auto tap1 = hn::Set(d, form.mFeed[1]);
    const auto tap2 = hn::Set(d, form.mFeed[2]);
    const auto tap3 = hn::Set(d, form.mFeed[3]);
    const auto tap4 = hn::Set(d, form.mFeed[4]);
    const auto tap5 = hn::Set(d, form.mFeed[5]);
    const auto tap6 = hn::Set(d, form.mFeed[6]);
    const auto tap7 = hn::Set(d, form.mFeed[7]);
    const auto tap8 = hn::Set(d, form.mFeed[8]);

    for (std::size_t n = inPlain; n < inCount; n += lanes) {
        const auto* x = inSource + n;
        auto sum = hn::Mul(tap0, hn::LoadU(d, x));
        sum = hn::MulAdd(tap1, hn::LoadU(d, x - 1), sum);
        sum = hn::MulAdd(tap2, hn::LoadU(d, x - 2), sum);
        if (lanes > 1) {
            sum = hn::MulAdd(tap3, hn::LoadU(d, x - 3), sum);
            sum = hn::MulAdd(tap4, hn::LoadU(d, x - 4), sum);
        }
        if (lanes > 2) {
            sum = hn::MulAdd(tap5, hn::LoadU(d, x - 5), sum);
            sum = hn::MulAdd(tap6, hn::LoadU(d, x - 6), sum);
            sum = hn::MulAdd(tap7, hn::LoadU(d, x - 7), sum);
            sum = hn::MulAdd(tap8, hn::LoadU(d, x - 8), sum);
        }
        sum = hn::NegMulAdd(backTap2, back2, sum);
        back2 = back1;
        back1 = hn::NegMulAdd(backTap1, back1, sum);
        if (n + lanes <= inCount) {
            hn::StoreU(back1, d, outDest + n);
        } else {
            hn::StoreU(back1, d, past);
            std::copy_n(past, inCount - n, outDest + n);
        }
    }
}

void Recursion(const double* HWY_RESTRICT inFeed, const double* HWY_RESTRICT inBack, std::size_t inOrder,
               const double* HWY_RESTRICT inSource, std::size_t inCount, double* HWY_RESTRICT ioDest)
{
    // The newest output, on which the chain of samples hangs, stays in a register and comes in last.
    double newest = *(ioDest - 1);
    for (std::size_t n = 0; n < inCount; ++n) {
        const auto* x = inSource + n;
        const auto* y = ioDest + n;
        double sum = inFeed[0] * x[0];
        for (std::size_t k = inOrder; k > 1; --k) {
            sum += inFeed[k] * *(x - k) - inBack[k - 1] * *(y - k);
        }
        newest = (sum + inFeed[1] * *(x - 1)) - inBack[0] * newest;
        ioDest[n] = newest;
    }
}

} // namespace
} // namespace brisken::filter::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace brisken::filter {

HWY_EXPORT(Section);
HWY_EXPORT(Recursion);

void SectionRow(const SectionForms& inForms, const double* inSource, std::size_t inCount, std::size_t inPlain,
                const SectionPast& inPast, double* outDest)
{
    BRISKEN_DISPATCH(Section)(inForms, inSource, inCount, inPlain, inPast, outDest);
}

void RecursionRow(const double* inFeed, const double* inBack, std::size_t inOrder, const double* inSource,
                  std::size_t inCount, double* ioDest)
{
    BRISKEN_DISPATCH(Recursion)(inFeed, inBack, inOrder, inSource, inCount, ioDest);
}

} // namespace brisken::filter
#endif
