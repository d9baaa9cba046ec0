#include <tessaro/restoration/prediction/LpcCoeffs.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

/// How far reflections stay below 1
constexpr double kReflectionMargin = 1e-4;
/// A pivot below this part of its diagonal element is one of a row that depends on the rows before it.
constexpr double kSmallestPivot = 1e-10;

template <typename T>
void Grow(std::vector<T>& ioRow, std::size_t inSize)
{
    if (ioRow.size() < inSize) {
        ioRow.resize(inSize);
    }
}

/// Takes from each error its part of the other one.
void Reflect(unsigned inCount, double inReflection, double* __restrict ioForward,
             double* __restrict ioBackward)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const double forward = ioForward[i];
        ioForward[i] = forward - inReflection * ioBackward[i];
        ioBackward[i] -= inReflection * forward;
    }
}

} // namespace

void LpcCoeffs::ReserveMemory(unsigned inOrder)
{
    Grow(mCoefficients, std::size_t{inOrder} + 1);
    Grow(mPrevious, std::size_t{inOrder} + 1);
}

void LpcCoeffs::StartRecursion(unsigned inOrder)
{
    ReserveMemory(inOrder);
    brisken::utility::Zero(inOrder + 1, mCoefficients.data());
    mCoefficients[0] = 1.0;
}

/// Raises the order by one: the predictor of the stage before, less its mirror image times the reflection
void LpcCoeffs::AddStage(unsigned inStage, double inReflection)
{
    std::copy_n(mCoefficients.begin() + 1, inStage - 1, mPrevious.begin() + 1);
    for (unsigned k = 1; k < inStage; ++k) {
        mCoefficients[k] = mPrevious[k] - inReflection * mPrevious[inStage - k];
    }
    mCoefficients[inStage] = inReflection;
}

void LpcCoeffs::Store(unsigned inOrder, float* outCoefficients) const
{
    for (unsigned k = 0; k <= inOrder; ++k) {
        outCoefficients[k] = static_cast<float>(mCoefficients[k]);
    }
}

void LpcCoeffs::LevinsonRecursion(unsigned inOrder, const float* inCorrelation, float* outCoefficients)
{
    StartRecursion(inOrder);
    double error = inCorrelation[0];
    for (unsigned stage = 1; stage <= inOrder && inCorrelation[0] != 0.0f; ++stage) {
        double numerator = inCorrelation[stage];
        for (unsigned k = 1; k < stage; ++k) {
            numerator -= mCoefficients[k] * inCorrelation[stage - k];
        }
        const double margin = std::copysign(std::abs(numerator) * kReflectionMargin, error);
        if (margin + error == 0.0) {
            break;
        }
        const double reflection = numerator / (margin + error);
        AddStage(stage, reflection);
        error *= 1.0 - reflection * reflection;
    }
    Store(inOrder, outCoefficients);
}

void LpcCoeffs::BurgRecursion(const float* inSamples, unsigned inCount, float* outCoefficients,
                              unsigned inOrder)
{
    StartRecursion(inOrder);
    Grow(mForward, inCount);
    Grow(mBackward, inCount);
    std::copy_n(inSamples, inCount, mForward.begin());
    std::copy_n(inSamples, inCount, mBackward.begin());
    for (unsigned stage = 1; stage <= inOrder && stage < inCount; ++stage) {
        // The forward error of a sample meets the backward error of the sample before. The backward row
        // stays where it is while the forward row moves on, so that results go where their factors were.
        const unsigned count = inCount - stage;
        double* const forward = mForward.data() + stage;
        double* const backward = mBackward.data();
        const double numerator = brisken::utility::DotProduct(count, forward, backward);
        const double denominator = brisken::utility::DotProduct(count, forward, forward) +
                                   brisken::utility::DotProduct(count, backward, backward);
        if (denominator == 0.0) {
            break;
        }
        const double reflection = 2.0 * numerator / denominator;
        AddStage(stage, reflection);
        Reflect(count, reflection, forward, backward);
    }
    Store(inOrder, outCoefficients);
}

/// Fills the lower half: element (i, j) is the sum of x[n - i] x[n - j] over n from the order to the end.
/// One step down the diagonal differs from it by two products only.
void LpcCoeffs::MakeCovariances(const float* inSamples, unsigned inCount, unsigned inOrder)
{
    const std::size_t size = std::size_t{inOrder} + 1;
    Grow(mMatrix, size * size);
    Grow(mForward, inCount);
    std::copy_n(inSamples, inCount, mForward.begin());
    const double* const x = mForward.data();
    for (unsigned i = 0; i <= inOrder; ++i) {
        mMatrix[i * size] = brisken::utility::DotProduct(inCount - inOrder, x + inOrder, x + (inOrder - i));
    }
    for (unsigned j = 1; j <= inOrder; ++j) {
        for (unsigned i = j; i <= inOrder; ++i) {
            mMatrix[i * size + j] = mMatrix[(i - 1) * size + j - 1] + x[inOrder - i] * x[inOrder - j] -
                                    x[inCount - i] * x[inCount - j];
        }
    }
}

/// Solves rows and columns 1 to the order against column 0 (A. L. Cholesky), the factors in place. A row that
/// depends on those before it has a pivot of 0 and takes no part.
void LpcCoeffs::SolveCovariances(unsigned inOrder)
{
    const std::size_t size = std::size_t{inOrder} + 1;
    const auto row = [this, size](unsigned inIndex) { return mMatrix.data() + inIndex * size; };
    const auto divide = [](double inDividend, double inPivot) {
        return inPivot > 0.0 ? inDividend / inPivot : 0.0;
    };
    double* const a = mCoefficients.data();
    for (unsigned i = 1; i <= inOrder; ++i) {
        const double smallest = kSmallestPivot * row(i)[i];
        for (unsigned j = 1; j < i; ++j) {
            const double known = brisken::utility::DotProduct(j - 1, row(i) + 1, row(j) + 1);
            row(i)[j] = divide(row(i)[j] - known, row(j)[j]);
        }
        const double pivot = row(i)[i] - brisken::utility::DotProduct(i - 1, row(i) + 1, row(i) + 1);
        row(i)[i] = pivot > smallest ? std::sqrt(pivot) : 0.0;
        a[i] = divide(row(i)[0] - brisken::utility::DotProduct(i - 1, row(i) + 1, a + 1), row(i)[i]);
    }
    for (unsigned i = inOrder; i >= 1; --i) {
        for (unsigned k = i + 1; k <= inOrder; ++k) {
            a[i] -= row(k)[i] * a[k];
        }
        a[i] = divide(a[i], row(i)[i]);
    }
}

void LpcCoeffs::Covariance(const float* inSamples, unsigned inCount, float* outCoefficients, unsigned inOrder)
{
    StartRecursion(inOrder);
    if (inCount > inOrder) {
        MakeCovariances(inSamples, inCount, inOrder);
        SolveCovariances(inOrder);
    }
    Store(inOrder, outCoefficients);
}

void LpcCoeffs::RunLevinsonRecursion(unsigned inOrder, const float* inCorrelation, float* outCoefficients)
{
    LpcCoeffs().LevinsonRecursion(inOrder, inCorrelation, outCoefficients);
}

void LpcCoeffs::RunBurgRecursion(const float* inSamples, unsigned inCount, float* outCoefficients,
                                 unsigned inOrder)
{
    LpcCoeffs().BurgRecursion(inSamples, inCount, outCoefficients, inOrder);
}

} // namespace tessaro
