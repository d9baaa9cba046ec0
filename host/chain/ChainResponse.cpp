#include "ChainResponse.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace host {

namespace {

constexpr double kMeasuredSeconds = 12.0; // longer than the longest delay
constexpr float kQuiet = 1e-9f;           // of the peak: -180 dB
constexpr double kDelayStep = 0.01;       // Hz; small, as phases of a long delay turn quickly

double Wrap(double inRadians)
{
    return std::remainder(inRadians, 2.0 * M_PI);
}

double TellGroupDelay(const EffectChain& inChain, double inFrequency)
{
    const auto below = inChain.GetResponse(inFrequency - kDelayStep);
    const auto above = inChain.GetResponse(inFrequency + kDelayStep);
    return -Wrap(*above->mPhase - *below->mPhase) / (4.0 * M_PI * kDelayStep);
}

} // namespace

ChainResponse TellResponse(const EffectChain& inChain, int inSampleRate,
                           const std::vector<double>& inFrequencies)
{
    const double latency = static_cast<double>(inChain.GetLatency()) / inSampleRate;
    ChainResponse response;
    for (const double frequency : inFrequencies) {
        const auto point = inChain.GetResponse(frequency);
        const bool hasPhase = point && point->mPhase;
        response.mMagnitude.push_back(point ? point->mMagnitude : NAN);
        response.mPhase.push_back(hasPhase ? Wrap(*point->mPhase + 2.0 * M_PI * frequency * latency) : NAN);
        response.mGroupDelay.push_back(hasPhase ? TellGroupDelay(inChain, frequency) - latency : NAN);
    }
    return response;
}

ImpulseResponse MeasureImpulseResponse(EffectChain& ioChain, int inSampleRate, unsigned inMaxBlock)
{
    ioChain.Reset();
    ImpulseResponse response;
    auto& samples = response.mSamples;
    tessaro::AudioBuffer block(1, inMaxBlock);
    const auto length = static_cast<std::size_t>(kMeasuredSeconds * inSampleRate);
    while (samples.size() < length) {
        block.ZeroChannel(0, inMaxBlock, true);
        if (samples.empty()) {
            block.ClearZeroFlags();
            block[0][0] = 1.0f;
        }
        ioChain.Process(block);
        if (block.IsChannelZero(0)) {
            samples.resize(samples.size() + inMaxBlock, 0.0f);
        } else {
            samples.insert(samples.end(), block[0], block[0] + inMaxBlock);
        }
    }
    float peak = 0.0f;
    for (const float sample : samples) {
        peak = std::max(peak, std::abs(sample));
    }
    const auto last = std::find_if(samples.rbegin(), samples.rend(),
                                   [peak](float inSample) { return std::abs(inSample) > kQuiet * peak; });
    response.mHasDiedAway = last - samples.rbegin() > static_cast<std::ptrdiff_t>(inMaxBlock);
    samples.erase(last.base(), samples.end());
    return response;
}

ChainResponse ComputeResponse(const ImpulseResponse& inImpulse, std::int64_t inLatency, int inSampleRate,
                              const std::vector<double>& inFrequencies)
{
    ChainResponse response;
    for (const double frequency : inFrequencies) {
        // The transform of h(n) at this frequency, and that of n * h(n), whose quotient has the delay.
        std::complex<double> transform;
        std::complex<double> weighted;
        const auto turn = std::polar(1.0, -2.0 * M_PI * frequency / inSampleRate);
        auto phasor = std::polar(1.0, 2.0 * M_PI * frequency * static_cast<double>(inLatency) / inSampleRate);
        for (std::size_t i = 0; i < inImpulse.mSamples.size(); ++i) {
            const auto term = phasor * static_cast<double>(inImpulse.mSamples[i]);
            transform += term;
            weighted += static_cast<double>(i) * term;
            phasor *= turn;
        }
        const double energy = std::norm(transform);
        const double delay = (weighted * std::conj(transform)).real() / energy;
        response.mMagnitude.push_back(std::abs(transform));
        response.mPhase.push_back(energy > 0.0 ? std::arg(transform) : NAN);
        response.mGroupDelay.push_back((delay - static_cast<double>(inLatency)) / inSampleRate);
    }
    return response;
}

} // namespace host
