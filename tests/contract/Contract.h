#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <ombrel/utility/Flags.h>

/// The promises that all block processors make, checked in one place.
///
/// A processor registers with a file of its own, `<X>Contract.cpp`: a subject, which drives it, and a test
/// that hands the terms to `ExpectKeepsContract`. See `DelayLineContract.cpp`.
namespace tessaro::contract {

using SilenceFlags = ombrel::utility::Flags<std::uint64_t>;

/// One processor, in the shape that the checks drive.
class ContractSubject
{
public:
    virtual ~ContractSubject() = default;

    /// Called once, first.
    virtual void Configure(int inChannels, int inRate, int inMaxBlock) = 0;
    virtual void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                         SilenceFlags inSilent) = 0;
    virtual void Reset() = 0;
    /// What the processor reports, in samples.
    [[nodiscard]] virtual int Latency() const = 0;
};

enum class Promise
{
    kSplits,       ///< any split of a stream into blocks, tiny and empty ones too, gives the same output
    kSilence,      ///< a silent channel is not read and counts as zeros
    kReset,        ///< `Reset` gives the state of a fresh object
    kPoison,       ///< NaN or infinity in the input does not outlive `Reset`
    kLatency,      ///< the latency reported is the latency measured
    kNoAllocation, ///< `Process` does not allocate
    kInPlace,      ///< in place gives the same as into other rows, and those leave the input alone
    kFinite,       ///< no NaN or infinity comes out, after silence neither
    kGrowth,       ///< a block above the maximum makes the processor grow
};

struct ContractFormat
{
    int mChannels;
    int mRate;
};

/// What holds for one processor.
struct ContractTerms
{
    enum class Rows
    {
        kAny,
        kInPlaceOnly,
        kSeparateOnly
    };
    enum class Growth
    {
        kNone,         ///< the maximum block is the caller's to keep
        kRestarts,     ///< a block above it is processed whole, history may be lost
        kKeepsHistory, ///< and the stream goes on
    };

    std::function<std::unique_ptr<ContractSubject>()> mCreate;

    /// Whether `Process` takes silence flags.
    bool mHasSilenceFlags = true;
    Rows mRows = Rows::kAny;
    Growth mGrowth = Growth::kNone;

    /// Largest difference of a sample between two splits, and between flagged silence and zeros.
    float mSplitTolerance = 0.0f;
    float mSilenceTolerance = 0.0f;
    /// Samples
    int mLatencyTolerance = 0;

    int mMaxBlock = 512;
    /// Length of the streams in samples; more than the memory of the processor shows more.
    std::size_t mStreamLength = 6000;
    /// Peak of the noise that is processed
    double mLevel = 0.5;
    std::vector<ContractFormat> mFormats = {{1, 48000}, {2, 44100}, {3, 8000},  {4, 96000},
                                            {5, 32000}, {6, 22050}, {7, 16000}, {8, 192000}};

    /// Promises that the processor is required to break, each with the reason.
    std::map<Promise, std::string> mExceptions = {};

    /// Whether a read of a silent channel stops a program that runs under the address sanitizer.
    bool mTrapReadsOfSilence = true;
};

/// The name of a promise, for messages.
[[nodiscard]] std::string_view NameOf(Promise inPromise);

/// Checks one promise. Empty when it is kept; otherwise what was broken, where and how.
[[nodiscard]] std::string CheckPromise(const ContractTerms& inTerms, Promise inPromise);

/// Checks all promises but the exceptions, and fails the test for each that is broken.
void ExpectKeepsContract(const ContractTerms& inTerms);

} // namespace tessaro::contract
