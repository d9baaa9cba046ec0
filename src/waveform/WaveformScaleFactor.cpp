#include <tessaro/waveform/WaveformScaleFactor.h>

#include <algorithm>
#include <utility>

#include <ombrel/debug/Assert.h>

namespace tessaro::waveform {

namespace {

/// Programs find this check in their logs by its place, which is kept where the code moves.
constexpr const char* kCheckFile = "waveform/src/WaveformScaleFactor";
constexpr int kCheckLine = 138;
constexpr const char* kCheckExpression =
    "(mChannelScaleFactors.size() != 1) && (inWaveformScaleFactor.mChannelScaleFactors.size() != 1)";

bool ChangesNothing(const WaveformChannelScaleFactor& inFactor)
{
    return inFactor.GetType() == WaveformScaleFactorType::kNone;
}

} // namespace

WaveformScaleFactor::WaveformScaleFactor(WaveformChannelScaleFactor&& ioFactor)
{
    mChannelScaleFactors.push_back(std::move(ioFactor));
}

WaveformScaleFactor::WaveformScaleFactor(std::vector<WaveformChannelScaleFactor>&& ioFactors)
    : mChannelScaleFactors(std::move(ioFactors))
{
    if (!mChannelScaleFactors.empty() && std::ranges::all_of(mChannelScaleFactors, ChangesNothing)) {
        mChannelScaleFactors.erase(mChannelScaleFactors.begin() + 1, mChannelScaleFactors.end());
    }
}

WaveformScaleFactor::WaveformScaleFactor(WaveformScaleFactor&&) noexcept = default;
WaveformScaleFactor& WaveformScaleFactor::operator=(WaveformScaleFactor&&) noexcept = default;
WaveformScaleFactor::~WaveformScaleFactor() = default;

const WaveformChannelScaleFactor& WaveformScaleFactor::GetChannelScaleFactor(std::size_t inChannel) const
{
    if (mChannelScaleFactors.empty()) {
        static const WaveformChannelScaleFactor none(1.0f);
        return none;
    }
    return mChannelScaleFactors[inChannel < mChannelScaleFactors.size() ? inChannel : 0];
}

WaveformScaleFactor& WaveformScaleFactor::operator*=(WaveformScaleFactor&& ioOther)
{
    MulDiv(std::move(ioOther), OperatorType::kMultiply);
    return *this;
}

WaveformScaleFactor& WaveformScaleFactor::operator/=(WaveformScaleFactor&& ioOther)
{
    MulDiv(std::move(ioOther), OperatorType::kDivide);
    return *this;
}

void WaveformScaleFactor::MulDiv(WaveformScaleFactor&& ioOther, OperatorType inOperator)
{
    auto& others = ioOther.mChannelScaleFactors;
    if (mChannelScaleFactors.size() != others.size()) {
        if (mChannelScaleFactors.size() != 1 && others.size() != 1) {
            ombrel::debug::ThrowCheckException(
                "Invalid channel scale count. One part must contain one channel only.",
                ombrel::config::kResultCheckFailed,
                {kCheckExpression, kCheckFile, kCheckLine, static_cast<const char*>(__func__)});
        }
        // The wider side is the one that is kept, also as the dividend of a division by it.
        if (mChannelScaleFactors.size() < others.size()) {
            std::swap(mChannelScaleFactors, others);
        }
        if (!others.empty()) {
            MulDivBySingle(others.front(), inOperator);
        }
        return;
    }
    for (std::size_t channel = 0; channel < others.size(); ++channel) {
        if (inOperator == OperatorType::kMultiply) {
            mChannelScaleFactors[channel] *= std::move(others[channel]);
        } else {
            mChannelScaleFactors[channel] /= std::move(others[channel]);
        }
    }
}

void WaveformScaleFactor::MulDivBySingle(const WaveformChannelScaleFactor& inFactor, OperatorType inOperator)
{
    for (WaveformChannelScaleFactor& factor : mChannelScaleFactors) {
        // Each channel uses up a factor of its own. A constant of 1 becomes none on the way.
        WaveformChannelScaleFactor own(inFactor.GetConstantScale());
        if (inFactor.GetType() == WaveformScaleFactorType::kDynamic) {
            own = WaveformChannelScaleFactor(
                WaveformChannelScaleFactor::ScaleVector(inFactor.GetWaveformScaleVector()));
        }
        if (inOperator == OperatorType::kMultiply) {
            factor *= std::move(own);
        } else {
            factor /= std::move(own);
        }
    }
}

} // namespace tessaro::waveform
