#pragma once

#include <memory>
#include <vector>

#include <ombrel/utility/CheckedValue.h>
#include <tessaro/Export.h>

namespace tessaro {

/// One node of a wanted frequency response.
struct NodeFR
{
    enum Type
    {
        kBell = 0,
        kLowpass = 1,
        kHighpass = 2,
        kLowShelf = 3,
        kHighShelf = 4
    };

    float mFrequency = 1000.0f; ///< Hz: centre or corner
    float mGain = 0.0f;         ///< dB: height of a bell or shelf
    float mQ = 1.0f;            ///< width
    float mScale = 1.0f;        ///< times the gain; of slopes their steepness, in units of 6 dB
    float mPhaseMix = 0.0f;     ///< -1 (minimum phase) to 1 (maximum phase)
    int mType = kBell;          ///< any other than the five adds nothing
};

/// Designs finite impulse responses from magnitudes or nodes, with linear, minimum, maximum or mixed phase,
/// and tells the response of given ones.
///
/// Constructed with the transform sizes that its calls may name, powers of two from 2 on; each has its tables
/// prepared, so that repeated designs of the same size are quick. A size that is not in its list makes a call
/// return without writing anything, except for the designs, whose `N` may be any power of two from 2, and for
/// the `Build` calls, which need no list. Magnitudes are linear, `N / 2 + 1` bins from 0 Hz to half the
/// sampling rate, for a transform of `N`. The Kaiser parameter is the window's beta.
///
/// Work memory is kept between calls and grows as needed: [control], one thread at a time. The static calls
/// use nothing in common [any thread].
///
/// Method: frequency sampling, a Kaiser window over the taps; minimum phase by the real cepstrum (A.
/// Oppenheim and R. Schafer, "Discrete-Time Signal Processing").
class TESSARO_EXPORT FIR
{
public:
    /// Sizes of the transforms of designs and analyses, and of those for minimum phase. Throws
    /// `std::length_error` for a size above 2^26.
    FIR(std::vector<unsigned int>& inFFTSizes, std::vector<unsigned int>& inMinPhaseSizes);
    ~FIR();
    FIR(const FIR&) = delete;
    FIR& operator=(const FIR&) = delete;

    /// Where a size stands in its list; invalid where it does not.
    [[nodiscard]] ombrel::utility::checked_value<unsigned int> getFFTStateIndex(unsigned inSize) const;
    [[nodiscard]] ombrel::utility::checked_value<unsigned int> getDHTStateIndex(unsigned inSize) const;

    /// Adds up the nodes in dB over a logarithmic frequency axis, bells and shelves as raised cosines, and
    /// writes `N / 2 + 1` values, linear or in dB. A bell narrower than 20 bins is widened to about that, and
    /// then ends at half the rate at most. A slope is -3 dB times its scale at its frequency. Without nodes
    /// 1, or 0 dB, throughout.
    void BuildFreqResp(const NodeFR* inNodes, unsigned inCount, float* outMagnitude, unsigned inN,
                       float inSampleRate, bool inDecibels);

    /// The magnitude of a cascade of second-order sections, six values each, analog (ascending powers of s)
    /// or digital (of `z^-1`). Written, or with `inAccumulate` multiplied into what `outMagnitude` holds.
    void BuildAnalogFreqResp(const double* inCoefficients, unsigned inSections, float* outMagnitude,
                             unsigned inN, float inSampleRate, bool inAccumulate);
    void BuildDigitalIIRFreqResp(const double* inCoefficients, unsigned inSections, float* outMagnitude,
                                 unsigned inN, float inSampleRate, bool inAccumulate);

    /// Taps of a magnitude, and of a phase in radians unless that is null. `inTaps` of them, up to `N`, with
    /// time 0 at index `inTaps / 2`; for 0 the longest symmetric ones: `N - 1` with the middle at `N / 2 -
    /// 1`, and a last one of 0.
    void DesignFIR(const float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                   const float* inPhase, unsigned inTaps);

    /// `N` taps of minimum phase, of which the last is 0. The larger `inMinPhaseSize` is against `N`, the
    /// closer.
    void DesignFIRMinPhase(float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                           unsigned inMinPhaseSize);

    /// The product of a minimum-phase, a linear-phase and a maximum-phase part: `N` taps, of which the last
    /// is 0. Needs `4 N` in the list of minimum-phase sizes; without it the outer parts stay linear.
    void DesignFIRMixedPhase(const float* inMinimum, const float* inLinear, const float* inMaximum,
                             unsigned inN, float inKaiserParameter, float* outTaps);
    /// The same of nodes, each of which is shared out by its phase mix.
    void DesignFIRMixedPhase(const NodeFR* inNodes, unsigned inCount, unsigned inN, float inSampleRate,
                             float inKaiserParameter, float* outTaps);

    /// Gives the taps the phase that lets their energy come as early as it can; the magnitude stays, as far
    /// as `inSize` leaves room for it.
    void ConvertToMinPhase(float* ioTaps, unsigned inCount, unsigned inSize);
    void ConvertToMinPhase(double* ioTaps, unsigned inCount, unsigned inSize);

    /// The response of up to `N` taps at `N / 2 + 1` bins: linear magnitude, phase in radians, unwrapped on
    /// request, group delay in samples from the differences of the unwrapped phase. Null outputs are left
    /// out.
    void GetFreqResp(const float* inTaps, unsigned inCount, unsigned inN, float* outMagnitude,
                     float* outPhase, bool inUnwrap, float* outGroupDelay);
    /// Phase alone. A silent bin has a phase of 0.
    void GetPhaseResponse(const float* inTaps, unsigned inCount, unsigned inN, float* outPhase,
                          bool inUnwrap);
    /// Group delay alone, by the transform of the taps times their index; `inSilentValue` where there is no
    /// energy.
    void GetGroupDelay(const float* inTaps, unsigned inCount, unsigned inN, float* outGroupDelay,
                       float inSilentValue);

    /// The calls above on a temporary object.
    static void RunBuildFreqResp(const NodeFR* inNodes, unsigned inCount, float* outMagnitude, unsigned inN,
                                 float inSampleRate, bool inDecibels);
    static void RunDesignFIR(const float* inMagnitude, unsigned inN, float inKaiserParameter, float* outTaps,
                             const float* inPhase, unsigned inTaps);
    static void RunDesignFIRMinPhase(float* inMagnitude, unsigned inN, float inKaiserParameter,
                                     float* outTaps, unsigned inMinPhaseSize);
    static void RunGetFreqResp(const float* inTaps, unsigned inCount, unsigned inN, float* outMagnitude,
                               float* outPhase, bool inUnwrap, float* outGroupDelay);

private:
    struct Transforms;

    [[nodiscard]] bool TransformTaps(const float* inTaps, unsigned inCount, unsigned inN,
                                     std::vector<float>& outSpectrum, bool inTimesIndex);

    std::vector<unsigned int> mFFTSizes;
    std::vector<unsigned int> mMinPhaseSizes;
    std::unique_ptr<Transforms> mTransforms;
    std::vector<float> mTime;
    std::vector<float> mSpectrum;
    std::vector<float> mSecondSpectrum;
    std::vector<double> mDoubles;
};

} // namespace tessaro
