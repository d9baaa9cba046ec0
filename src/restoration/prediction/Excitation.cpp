#include <tessaro/restoration/prediction/Excitation.h>

#include <algorithm>
#include <cmath>

#include <brisken/Utility.h>

namespace tessaro {

namespace {

constexpr unsigned kShortestFrame = 8;
constexpr unsigned kLowestOrder = 2;
/// Predictors that have to be fitted anew stop below it.
constexpr unsigned kLowestReducedOrder = 4;
constexpr float kLargestCoefficient = 10.0f;
/// Keeps the result of two residuals of 0 from being no number
constexpr float kSmallestSum = 1e-9f;
/// Samples that are predicted in one go
constexpr unsigned kPiece = 256;
/// Room behind the history, in which the stream advances before the history is moved
constexpr unsigned kRoom = 2048;
constexpr unsigned kNumMaskBits = 32;

unsigned ToSamples(float inSeconds, float inRate, unsigned inAtLeast)
{
    return static_cast<unsigned>(std::max<long>(std::lround(inSeconds * inRate), inAtLeast));
}

/// Twice the product over the sum: the harmonic mean of both magnitudes
void Combine(unsigned inCount, const float* inForward, const float* inBackward, float* outExcitation)
{
    for (unsigned i = 0; i < inCount; ++i) {
        const float forward = std::abs(inForward[i]);
        const float backward = std::abs(inBackward[i]);
        outExcitation[i] = 2.0f * forward * backward / (forward + backward + kSmallestSum);
    }
}

} // namespace

void Excitation::SetMode(float inFrameSeconds, unsigned inOrder, float inHopSeconds)
{
    mFrameSeconds = inFrameSeconds;
    mOrder = std::max(inOrder, kLowestOrder);
    mHopSeconds = inHopSeconds;
    Configure();
}

void Excitation::StartNewStream(unsigned inNumChannels, float inSampleRate, unsigned inDelay)
{
    mNumChannels = inNumChannels;
    mSampleRate = inSampleRate;
    mDelay = inDelay;
    Configure();
}

/// Sizes everything once mode and stream are known.
void Excitation::Configure()
{
    if (mOrder == 0 || mNumChannels == 0) {
        return;
    }
    mFrameLength = ToSamples(mFrameSeconds, mSampleRate, kShortestFrame);
    mHop = ToSamples(mHopSeconds, mSampleRate, 1);
    mAutocorr.SetMode(mFrameLength, mOrder + 1, false);
    mLpc.ReserveMemory(mOrder);
    mCorrelation.resize(mOrder + 1);
    mPredictors.assign(mNumChannels, Predictor{std::vector<float>(mOrder + 1), 0});
    mInputRows.resize(mNumChannels);
    mSilence.assign(kPiece, 0.0f);
    for (auto* row : {&mForward, &mBackward, &mExcitation}) {
        row->resize(kPiece);
    }
    mTail.SetTailMode(static_cast<int>(mNumChannels), static_cast<int>(mSampleRate), kRoom,
                      static_cast<int>(GetLatency() + GetReach()), true);
    Reset();
}

void Excitation::Reset()
{
    mTail.Reset();
    mPosition = 0;
    mNextUpdate = 0;
}

/// How far fit and prediction look to each side of a sample
unsigned Excitation::GetReach() const
{
    return std::max(mFrameLength / 2, mOrder);
}

unsigned Excitation::GetLatency() const
{
    return IsReady() ? GetReach() + mDelay : 0;
}

unsigned Excitation::GetLatencySafe(float inFrameSeconds, float inSampleRate, unsigned inOrder)
{
    return std::max(ToSamples(inFrameSeconds, inSampleRate, kShortestFrame), inOrder);
}

void Excitation::AppendInput(const float* const* inInput, unsigned inOffset, unsigned inCount,
                             unsigned inSilent)
{
    for (unsigned channel = 0; channel < mNumChannels; ++channel) {
        const bool isSilent = channel < kNumMaskBits && ((inSilent >> channel) & 1u) != 0;
        mInputRows[channel] = isSilent ? mSilence.data() : inInput[channel] + inOffset;
    }
    if (mTail.GetTotal() + inCount > mTail.GetTotalSize()) {
        mTail.Shift(static_cast<int>(mTail.GetTotal() - mTail.GetTailSize()));
    }
    mTail.Append(mInputRows.data(), inCount, 0);
}

void Excitation::Process(const float* const* inInput, unsigned inNumFrames, float* const* outExcitation,
                         float* const* outForwardError, float* const* outBackwardError,
                         float* const* outDelayed, unsigned inInputOffset, unsigned inOutputOffset,
                         unsigned inSilentChannels)
{
    if (!IsReady()) {
        return;
    }
    const Outputs outputs{outExcitation, outForwardError, outBackwardError, outDelayed};
    for (unsigned done = 0; done < inNumFrames;) {
        const unsigned piece = std::min(inNumFrames - done, kPiece);
        AppendInput(inInput, inInputOffset + done, piece, inSilentChannels);
        const unsigned first = mTail.GetTotal() - piece - GetLatency();
        for (unsigned begin = 0; begin < piece;) {
            if (mPosition >= mNextUpdate) {
                FitPredictors(first + begin);
                mNextUpdate = mPosition + mHop;
            }
            const auto count =
                static_cast<unsigned>(std::min<std::int64_t>(piece - begin, mNextUpdate - mPosition));
            ProcessPiece(first + begin, count, outputs, inOutputOffset + done + begin);
            mPosition += count;
            begin += count;
        }
        done += piece;
    }
}

/// Samples with one and the same predictor, the first of which stands at `inIndex` of the rows
void Excitation::ProcessPiece(unsigned inIndex, unsigned inCount, const Outputs& inOutputs, unsigned inOffset)
{
    for (unsigned channel = 0; channel < mNumChannels; ++channel) {
        const auto write = [&](float* const* outRows, const float* inRow) {
            if (outRows != nullptr) {
                brisken::utility::Copy(inCount, inRow, outRows[channel] + inOffset);
            }
        };
        Predict(channel, inIndex, inCount);
        write(inOutputs.mExcitation, mExcitation.data());
        write(inOutputs.mForward, mForward.data());
        write(inOutputs.mBackward, mBackward.data());
        write(inOutputs.mDelayed, mTail.GetPointer()[channel] + inIndex);
    }
}

void Excitation::FitPredictors(unsigned inIndex)
{
    for (unsigned channel = 0; channel < mNumChannels; ++channel) {
        FitPredictor(mTail.GetPointer()[channel] + (inIndex - mFrameLength / 2), mPredictors[channel]);
    }
}

void Excitation::FitPredictor(const float* inFrame, Predictor& outPredictor)
{
    mAutocorr.GetAutocorr(inFrame, mCorrelation.data(), mOrder + 1, mFrameLength, true);
    auto& coefficients = outPredictor.mCoefficients;
    unsigned order = mOrder;
    bool isUsable = false;
    do {
        mLpc.LevinsonRecursion(order, mCorrelation.data(), coefficients.data());
        coefficients[0] = -1.0f;
        isUsable = std::all_of(coefficients.begin(), coefficients.begin() + order + 1, [](float inValue) {
            return std::abs(inValue) <= kLargestCoefficient; // not so for NaN
        });
        outPredictor.mCount = isUsable ? order + 1 : 0;
        order -= std::min(order, 1 + order / 8);
    } while (!isUsable && order >= kLowestReducedOrder);
}

/// The residuals tap by tap, over rows: the same sums for each sample, however the stream is cut.
void Excitation::Predict(unsigned inChannel, unsigned inIndex, unsigned inCount)
{
    const float* const now = mTail.GetPointer()[inChannel] + inIndex;
    const auto& [coefficients, numTaps] = mPredictors[inChannel];
    brisken::utility::Zero(inCount, mForward.data());
    brisken::utility::Zero(inCount, mBackward.data());
    for (unsigned tap = 0; tap < numTaps; ++tap) {
        brisken::utility::AddConstantProduct(inCount, now - tap, mForward.data(), coefficients[tap]);
        brisken::utility::AddConstantProduct(inCount, now + tap, mBackward.data(), coefficients[tap]);
    }
    Combine(inCount, mForward.data(), mBackward.data(), mExcitation.data());
}

} // namespace tessaro
