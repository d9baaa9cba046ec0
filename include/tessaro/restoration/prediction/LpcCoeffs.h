#pragma once

#include <vector>

#include <tessaro/Export.h>

namespace tessaro {

/// Linear prediction: the coefficients with which the past of a signal tells its next sample best.
///
/// Results are `inOrder + 1` floats. The first one is 1 and stands for the sample itself; the others are
/// predictors: `x[n]` is about the sum of `a[k] * x[n - k]` over k from 1 to the order. The residual is the
/// difference of the two. All work is done in double precision and rounded at the end.
///
/// - `LevinsonRecursion` solves the normal equations of an autocorrelation (J. Durbin's form of N. Levinson's
///   recursion). The predictor is stable, and a window on the frame costs resolution.
/// - `BurgRecursion` minimises the forward and the backward error of the samples themselves (J. P. Burg). It
///   is stable too, needs no window, and resolves sines in short frames.
/// - `Covariance` minimises the forward error alone, without a condition on stability: the closest fit to a
///   frame that really is a sum of decaying or growing waves.
///
/// Memory for work is kept and grows only: after `ReserveMemory`, or after one call of the same size,
/// `LevinsonRecursion` is `[real-time]`. The other two take memory by the length of the frame, and are
/// `[real-time]` from their second call of the same size on. Nothing throws but std::bad_alloc. One thread at
/// a time.
class TESSARO_EXPORT LpcCoeffs
{
public:
    LpcCoeffs() = default;

    /// Makes room for `LevinsonRecursion` up to this order. [control]
    void ReserveMemory(unsigned inOrder);

    /// From the autocorrelation at lags 0 to `inOrder`. Reflections stay a hair (1e-4) below 1 in magnitude,
    /// so that signals predicted without error give stable predictors too. `inCorrelation[0]` of 0, silence,
    /// gives 1, 0, 0, and so on. The rows may be the same.
    void LevinsonRecursion(unsigned inOrder, const float* inCorrelation, float* outCoefficients);

    /// From `inCount` samples. Orders from `inCount` on have zeros behind coefficient `inCount - 1`. Silence
    /// gives 1, 0, 0, and so on.
    void BurgRecursion(const float* inSamples, unsigned inCount, float* outCoefficients, unsigned inOrder);

    /// From `inCount` samples, of which the first `inOrder` serve as past alone. Where they determine less
    /// than the order asks for (silence, fewer waves than the order, short frames), the predictors that are
    /// not needed are 0.
    void Covariance(const float* inSamples, unsigned inCount, float* outCoefficients, unsigned inOrder);

    /// `LevinsonRecursion` and `BurgRecursion` with memory of their own. [any thread]
    static void RunLevinsonRecursion(unsigned inOrder, const float* inCorrelation, float* outCoefficients);
    static void RunBurgRecursion(const float* inSamples, unsigned inCount, float* outCoefficients,
                                 unsigned inOrder);

private:
    void StartRecursion(unsigned inOrder);
    void AddStage(unsigned inStage, double inReflection);
    void Store(unsigned inOrder, float* outCoefficients) const;
    void MakeCovariances(const float* inSamples, unsigned inCount, unsigned inOrder);
    void SolveCovariances(unsigned inOrder);

    std::vector<double> mCoefficients;
    /// Of the stage before
    std::vector<double> mPrevious;
    std::vector<double> mForward;
    std::vector<double> mBackward;
    /// Of `Covariance`: square, of order + 1 rows
    std::vector<double> mMatrix;
};

} // namespace tessaro
