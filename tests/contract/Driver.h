#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "contract/Contract.h"
#include "support/Signals.h"

namespace tessaro::contract {

using testing::PlanarRows;

/// How a stream is cut and handed over.
struct Drive
{
    /// Block sizes, over and over
    std::vector<int> mBlocks;
    bool mInPlace = false;
    /// Silence of the stream, stretch by stretch, over and over; blocks are cut where it changes. The input
    /// is expected to hold zeros there.
    std::vector<SilenceFlags> mSilence = {};
    /// False: the zeros are handed over without a flag.
    bool mFlagSilence = true;
};

/// Samples of a stretch of silence
constexpr std::size_t kSilenceStretch = 700;

/// The silence at a sample.
[[nodiscard]] SilenceFlags SilenceAt(const std::vector<SilenceFlags>& inSilence, std::size_t inSample);

/// Room behind the output rows, which must stay as it is
constexpr std::size_t kGuardSamples = 16;
/// What the output rows hold before they are written
constexpr float kUnwritten = -12345.678f;

struct DriveResult
{
    /// As long as the input, and the guard
    PlanarRows mOutput;
    /// Of all calls of `Process`
    std::size_t mAllocations;
    bool mChangedInput;
};

/// A processor in one format.
class Driver
{
public:
    Driver(const ContractTerms& inTerms, ContractFormat inFormat, int inMaxBlock);

    /// Runs a stream through it, behind what it has processed so far.
    [[nodiscard]] DriveResult Run(const PlanarRows& inInput, const Drive& inDrive);
    void Reset() { mSubject->Reset(); }
    [[nodiscard]] int Latency() const { return mSubject->Latency(); }

private:
    void PrepareBlock(PlanarRows& ioInput, PlanarRows& ioOutput, std::size_t inPosition, std::size_t inCount,
                      SilenceFlags inSilent, bool inInPlace);

    std::unique_ptr<ContractSubject> mSubject;
    testing::PoisonedRow mSilentRow;
    std::vector<const float*> mInputRows;
};

} // namespace tessaro::contract
