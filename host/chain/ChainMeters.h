#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <tessaro/buffering/AudioBuffer.h>

#include "ChainDescription.h"
#include "EffectChain.h"
#include "Plot.h"

namespace host {

/// What the dynamics effects of a chain did over time, and how the levels lay before and behind the chain.
///
/// Show it each block before and behind the chain, then draw.
class ChainMeters
{
public:
    /// Looks at a chain that has been made from the description; both may go afterwards.
    ChainMeters(const ChainDescription& inDescription, EffectChain& ioChain, int inSampleRate);

    void AddInput(const tessaro::AudioBuffer& inBlock);
    /// Takes the gain reductions since the block before.
    void AddOutput(const tessaro::AudioBuffer& inBlock, EffectChain& ioChain);

    /// The deepest reduction of each dynamics effect in dB, 0 or below, by its name.
    struct Reduction
    {
        std::string mName;
        double mDecibels = 0.0;
    };
    std::vector<Reduction> GetDeepest() const;

    /// Gain reduction over time, one line for each dynamics effect, where there are any; below it the share
    /// of frames at each level, by the loudest channel. Throws `FileError`.
    void Draw(const std::string& inTitle, const std::filesystem::path& inPath) const;

private:
    /// Counts frames by their level in steps of 1 dB, the quietest step first.
    struct Histogram
    {
        static constexpr int kLowest = -90;
        static constexpr int kHighest = 12;

        std::array<std::int64_t, kHighest - kLowest> mCounts{};
        std::int64_t mFrames = 0;

        void Add(const tessaro::AudioBuffer& inBlock);
        std::vector<double> GetPercentages() const;
    };

    struct Trace
    {
        std::string mName;
        std::size_t mEffect = 0; ///< its place in the chain
        double mLateness = 0.0;  ///< of what it puts out, seconds
        std::vector<double> mDecibels = {};
    };

    Plot DrawTraces() const;

    double mSampleRate;
    std::int64_t mPosition = 0;
    std::vector<double> mTimes; ///< of the blocks, seconds
    std::vector<Trace> mTraces;
    Histogram mInput;
    Histogram mOutput;
};

} // namespace host
