#pragma once

#include <memory>
#include <string>
#include <vector>

namespace host {

/// What a conversion of the sampling rate is to be done with.
struct RateConversion
{
    enum class Engine
    {
        kTable,  ///< `tessaro::Resample`
        kKernel, ///< `tessaro::utility::Resampler`
        kLinear  ///< `tessaro::LinearResample`
    };

    Engine mEngine = Engine::kTable;
    int mSourceRate = 0;
    int mDestinationRate = 0;
    int mOrder = 0;           ///< of the table
    double mNoiseFloor = 0.0; ///< of the table, in dB
    double mQuality = 0.0;    ///< of the kernel, 0 to 1
};

/// Takes one channel to another rate, as a stream that lines up with its input: output sample n is the input
/// at n times the ratio of the rates. What is late is made up for; feed zeros behind the end until enough has
/// come out.
class RateConverter
{
public:
    /// Equal rates copy, whatever the engine.
    [[nodiscard]] static std::unique_ptr<RateConverter> Create(const RateConversion& inConversion);

    virtual ~RateConverter() = default;

    /// Appends what comes of `inCount` more samples.
    virtual void Convert(const float* inInput, int inCount, std::vector<float>& ioOutput) = 0;
};

} // namespace host
