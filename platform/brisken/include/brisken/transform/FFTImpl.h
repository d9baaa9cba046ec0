#pragma once

#include <complex>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

#include <brisken/transform/FFT.h>

namespace brisken::transform {

namespace details {

/// The number type of a deinterleaved state.
template <class State>
struct FFTSample;

template <>
struct FFTSample<FFTState_Complex_Float_Deinterleaved>
{
    using Type = float;
};

template <>
struct FFTSample<FFTState_Complex_Double_Deinterleaved>
{
    using Type = double;
};

} // namespace details

/// A complex transform of deinterleaved rows that owns what it needs: state and work buffer.
///
///     brisken::transform::FFTImpl<brisken::FFTState_Complex_Float_Deinterleaved> fft;
///     fft.SetFFTSize(10);                         // length 1024
///     fft.ProcessFwd(re, im, spectrumRe, spectrumIm);
///
/// `State` is one of the two deinterleaved states; `Complex` is the complex type of the same precision, for
/// code that is written over both. Definition, scaling, aliasing and error are those of `FFTFwd` and
/// `FFTInv`.
///
/// An object belongs to one thread at a time, since its transforms share its work buffer. It can be moved,
/// not copied. `SetFFTSize` allocates [control]; the transforms do not and never throw [real-time].
template <class State, class Complex = std::complex<typename details::FFTSample<State>::Type>>
class FFTImpl
{
public:
    using T = typename details::FFTSample<State>::Type;
    static_assert(std::is_same_v<Complex, std::complex<T>>, "state and complex type differ in precision");

    /// Has length 0 until `SetFFTSize`; a transform of length 0 does nothing.
    FFTImpl() = default;
    ~FFTImpl() { FFTFree(mState); }

    FFTImpl(const FFTImpl&) = delete;
    FFTImpl& operator=(const FFTImpl&) = delete;

    FFTImpl(FFTImpl&& ioOther) noexcept
        : mState(std::exchange(ioOther.mState, nullptr)),
          mSize(std::exchange(ioOther.mSize, 0)),
          mWork(std::move(ioOther.mWork))
    {
    }

    FFTImpl& operator=(FFTImpl&& ioOther) noexcept
    {
        std::swap(mState, ioOther.mState);
        std::swap(mSize, ioOther.mSize);
        std::swap(mWork, ioOther.mWork);
        return *this;
    }

    /// Makes the length 2^inOrder; nothing happens when it is that already. Throws what `FFTInit` throws, and
    /// the object is as before then. [control]
    void SetFFTSize(unsigned inOrder)
    {
        if (inOrder <= kMaxFFTOrder && mSize == 1u << inOrder) {
            return;
        }
        FFTImpl fresh;
        FFTInit(&fresh.mState, inOrder);
        unsigned bytes = 0;
        FFTGetBufSize(fresh.mState, &bytes);
        fresh.mWork.resize(bytes);
        fresh.mSize = 1u << inOrder;
        *this = std::move(fresh);
    }

    /// The length (not the order): the number of elements in each row; 0 before the first `SetFFTSize`.
    /// [any thread]
    unsigned GetFFTSize() const { return mSize; }

    /// Rows of `GetFFTSize()` numbers each. [real-time] [configured]
    void ProcessFwd(const T* inRe, const T* inIm, T* outRe, T* outIm)
    {
        if (mState != nullptr) {
            FFTFwd(inRe, inIm, outRe, outIm, mState, mWork.data());
        }
    }

    void ProcessInv(const T* inRe, const T* inIm, T* outRe, T* outIm)
    {
        if (mState != nullptr) {
            FFTInv(inRe, inIm, outRe, outIm, mState, mWork.data());
        }
    }

private:
    State* mState = nullptr;
    unsigned mSize = 0;
    std::vector<unsigned char> mWork;
};

} // namespace brisken::transform
