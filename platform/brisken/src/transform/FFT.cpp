#include <brisken/transform/FFT.h>

#include <cstdint>
#include <stdexcept>

#include "transform/Kernels.h"

namespace brisken {

namespace transform::details {

static_assert(kMaxOrder == kMaxFFTOrder);

template <class T>
struct RealState
{
    using Value = T;

    explicit RealState(unsigned inOrder) : plan(inOrder) {}

    RealPlan<T> plan;
};

template <class T>
struct ComplexState
{
    using Value = T;

    explicit ComplexState(unsigned inOrder)
        : plan(std::size_t{1} << inOrder), inverseScale(T(1) / static_cast<T>(plan.size))
    {
    }

    Plan<T> plan;
    T inverseScale;
};

} // namespace transform::details

struct FFTState_Float : transform::details::RealState<float>
{
    using RealState::RealState;
};

struct FFTState_Double : transform::details::RealState<double>
{
    using RealState::RealState;
};

struct FFTState_Complex_Double_Interleaved : transform::details::ComplexState<double>
{
    using ComplexState::ComplexState;
};

struct FFTState_Complex_Float_Deinterleaved : transform::details::ComplexState<float>
{
    using ComplexState::ComplexState;
};

struct FFTState_Complex_Double_Deinterleaved : transform::details::ComplexState<double>
{
    using ComplexState::ComplexState;
};

namespace transform {

namespace {

template <class State>
void Init(State** outState, unsigned inOrder)
{
    *outState = nullptr;
    if (inOrder > kMaxFFTOrder) {
        throw std::length_error("FFTInit: the order of the transform is too high");
    }
    *outState = new State(inOrder);
}

/// The work buffer comes with any alignment, so the size has room to align within it.
template <class State>
void GetBufSize(const State* inState, unsigned* outBytes)
{
    const auto elements = inState->plan.GetWorkElements();
    const auto bytes = elements * sizeof(typename State::Value) + details::kAlignment - 1;
    *outBytes = elements == 0 ? 0 : static_cast<unsigned>(bytes);
}

template <class T>
T* Align(unsigned char* ioWork)
{
    const auto misplaced = reinterpret_cast<std::uintptr_t>(ioWork) % details::kAlignment;
    return reinterpret_cast<T*>(misplaced == 0 ? ioWork : ioWork + (details::kAlignment - misplaced));
}

/// std::complex<double> is laid out as a pair of doubles by definition.
void TransformPairs(const std::complex<double>* inSource, std::complex<double>* outResult,
                    const details::Plan<double>& inPlan, double inSign, double inScale, unsigned char* ioWork)
{
    details::TransformPairs(inPlan, reinterpret_cast<const double*>(inSource),
                            reinterpret_cast<double*>(outResult), inSign, inScale, Align<double>(ioWork));
}

} // namespace

void FFTInit(FFTState_Float** outState, unsigned inOrder)
{
    Init(outState, inOrder);
}
void FFTInit(FFTState_Double** outState, unsigned inOrder)
{
    Init(outState, inOrder);
}
void FFTInit(FFTState_Complex_Double_Interleaved** outState, unsigned inOrder)
{
    Init(outState, inOrder);
}
void FFTInit(FFTState_Complex_Float_Deinterleaved** outState, unsigned inOrder)
{
    Init(outState, inOrder);
}
void FFTInit(FFTState_Complex_Double_Deinterleaved** outState, unsigned inOrder)
{
    Init(outState, inOrder);
}

void FFTGetBufSize(const FFTState_Float* inState, unsigned* outBytes)
{
    GetBufSize(inState, outBytes);
}
void FFTGetBufSize(const FFTState_Double* inState, unsigned* outBytes)
{
    GetBufSize(inState, outBytes);
}

void FFTGetBufSize(const FFTState_Complex_Double_Interleaved* inState, unsigned* outBytes)
{
    GetBufSize(inState, outBytes);
}

void FFTGetBufSize(const FFTState_Complex_Float_Deinterleaved* inState, unsigned* outBytes)
{
    GetBufSize(inState, outBytes);
}

void FFTGetBufSize(const FFTState_Complex_Double_Deinterleaved* inState, unsigned* outBytes)
{
    GetBufSize(inState, outBytes);
}

void FFTFwd(const float* inSamples, float* outSpectrum, const FFTState_Float* inState, unsigned char* ioWork)
{
    details::RealForward(inState->plan, inSamples, outSpectrum, Align<float>(ioWork));
}

void FFTFwd(const double* inSamples, double* outSpectrum, const FFTState_Double* inState,
            unsigned char* ioWork)
{
    details::RealForward(inState->plan, inSamples, outSpectrum, Align<double>(ioWork));
}

void FFTInv(const float* inSpectrum, float* outSamples, const FFTState_Float* inState, unsigned char* ioWork)
{
    details::RealInverse(inState->plan, inSpectrum, outSamples, Align<float>(ioWork));
}

void FFTInv(const double* inSpectrum, double* outSamples, const FFTState_Double* inState,
            unsigned char* ioWork)
{
    details::RealInverse(inState->plan, inSpectrum, outSamples, Align<double>(ioWork));
}

void FFTFwd(const std::complex<double>* inSamples, std::complex<double>* outSpectrum,
            const FFTState_Complex_Double_Interleaved* inState, unsigned char* ioWork)
{
    TransformPairs(inSamples, outSpectrum, inState->plan, 1.0, 1.0, ioWork);
}

void FFTInv(const std::complex<double>* inSpectrum, std::complex<double>* outSamples,
            const FFTState_Complex_Double_Interleaved* inState, unsigned char* ioWork)
{
    TransformPairs(inSpectrum, outSamples, inState->plan, -1.0, inState->inverseScale, ioWork);
}

void FFTFwd(const float* inRe, const float* inIm, float* outRe, float* outIm,
            const FFTState_Complex_Float_Deinterleaved* inState, unsigned char* ioWork)
{
    details::TransformSplit(inState->plan, inRe, inIm, outRe, outIm, 1.0f, Align<float>(ioWork));
}

void FFTInv(const float* inRe, const float* inIm, float* outRe, float* outIm,
            const FFTState_Complex_Float_Deinterleaved* inState, unsigned char* ioWork)
{
    details::TransformSplit(inState->plan, inIm, inRe, outIm, outRe, inState->inverseScale,
                            Align<float>(ioWork));
}

void FFTFwd(const double* inRe, const double* inIm, double* outRe, double* outIm,
            const FFTState_Complex_Double_Deinterleaved* inState, unsigned char* ioWork)
{
    details::TransformSplit(inState->plan, inRe, inIm, outRe, outIm, 1.0, Align<double>(ioWork));
}

void FFTInv(const double* inRe, const double* inIm, double* outRe, double* outIm,
            const FFTState_Complex_Double_Deinterleaved* inState, unsigned char* ioWork)
{
    details::TransformSplit(inState->plan, inIm, inRe, outIm, outRe, inState->inverseScale,
                            Align<double>(ioWork));
}

void FFTFree(FFTState_Float* inState) noexcept
{
    delete inState;
}
void FFTFree(FFTState_Double* inState) noexcept
{
    delete inState;
}
void FFTFree(FFTState_Complex_Double_Interleaved* inState) noexcept
{
    delete inState;
}
void FFTFree(FFTState_Complex_Float_Deinterleaved* inState) noexcept
{
    delete inState;
}
void FFTFree(FFTState_Complex_Double_Deinterleaved* inState) noexcept
{
    delete inState;
}

} // namespace transform

} // namespace brisken
