#pragma once

#include <array>
#include <cstddef>

#include <tessaro/Export.h>

namespace tessaro {

/// Butterworth low-pass, high-pass, band-pass or band-stop of a selectable order, as a cascade of sections on
/// one channel.
///
/// Life cycle: construct, `Configure`, `Retune`, then `Process` blocks of any length; `Retune` again at any
/// time between blocks, which keeps the memory. Until the first `Retune` after a change of order or type the
/// input passes unchanged.
///
/// The poles of the analog prototype are split into pairs, and a single one for an odd order. Each pair goes
/// through the frequency transformation of the type and the bilinear transform with tangent prewarp (A. V.
/// Oppenheim and R. W. Schafer, "Discrete-Time Signal Processing", chapter on filter design), so that the
/// gain is -3.01 dB exactly at the cutoff or at both edges of the band. Low-pass and high-pass have sections
/// of two poles, the band types sections of four.
///
/// Works in double precision; what one section hands to the next is rounded to single precision. No latency;
/// any split of a stream into blocks gives the same output, unless a smoothed `Retune` is under way. A NaN or
/// infinity in the input stays in the memory until `Reset`.
///
/// Nothing allocates, throws or locks. One thread at a time. A plain value, freely copied.
class TESSARO_EXPORT ButterworthCascade
{
public:
    enum Type : int
    {
        kLowpass = 1,
        kHighpass = 2,
        kBandpass = 3,
        kBandstop = 4
    };

    /// What a design reports. Nothing but `kNoError` has written coefficients.
    enum DesignError : int
    {
        kNoError = 0,
        kBadOrder = 1,     ///< below 1
        kBadType = 4,      ///< none of the four
        kBadFrequency = 5, ///< not above 0, or a band whose edges are not in order
    };

    static constexpr std::size_t kMostTerms = 5;
    static constexpr std::size_t kMostSections = 13;

    /// `H(z) = (feed[0] + feed[1] z^-1 + ...) / (1 + back[0] z^-1 + ...)`
    struct Section
    {
        std::array<double, kMostTerms> mFeed{1.0};
        std::array<double, kMostTerms - 1> mBack{};
    };

    /// A low-pass of order 2, with everything passing
    ButterworthCascade();

    /// Order and type. A type that does not exist counts as low-pass. The order of a band type is that of its
    /// prototype: its slopes are those of a low-pass of the same order. Order 26 is the highest for low-pass
    /// and high-pass and 16 for the band types; orders from there on become these. Lower ones are not
    /// limited: an order below 1 makes every `Retune` fail. Nothing happens if neither changes; otherwise the
    /// memory is cleared and everything passes. [configured], [real-time]
    void Configure(int inOrder, int inType);

    /// Moves the cutoff, a part of the sample rate above 0 and limited to 0.49. The band types take the band
    /// from `inCutoff` to `inUpperCutoff`; the others do not look at the latter. With `inSmoothing` above 0
    /// the coefficients go over to the new ones in as many samples, by one step at the start of each block in
    /// proportion to its length. When the result is not `kNoError` nothing changes. [configured], [real-time]
    DesignError Retune(double inCutoff, double inUpperCutoff = 0.0, int inSmoothing = 0);

    /// Filters `inCount` samples in place, `inStride` values apart from each other. [real-time]
    void Process(float* ioSamples, int inCount, int inStride = 1);

    /// Forgets past input and output, and ends a smoothed `Retune` at its target. [configured], [real-time]
    void Reset();

    /// As `Configure` made it
    [[nodiscard]] int GetOrder() const { return mOrder; }
    [[nodiscard]] int GetType() const { return mType; }
    [[nodiscard]] std::size_t GetNumSections() const { return mNumSections; }

    /// The design alone: writes the `(inOrder + 1) / 2` sections of the filter. The order is not limited, the
    /// cutoffs are. [any thread], [real-time]
    static DesignError Design(int inOrder, int inType, double inCutoff, double inUpperCutoff,
                              Section* outSections);

private:
    struct Past
    {
        std::array<double, kMostTerms - 1> mInput{};
        std::array<double, kMostTerms - 1> mOutput{};
    };
    using Bank = std::array<Section, kMostSections>;

    void AdvanceSmoothing(int inCount);
    void ProcessTwoPole(float* ioSamples, unsigned inCount, unsigned inStride);
    static void ProcessFourPole(float* ioSamples, int inCount, int inStride, const Section& inSection,
                                Past& ioPast);

    int mOrder = 2;
    int mType = kLowpass;
    std::size_t mNumSections = 1;
    alignas(32) Bank mSections{};
    Bank mTarget{};
    Bank mStep{}; ///< per sample
    int mSmoothingLeft = 0;
    std::array<Past, kMostSections> mPasts{};
};

} // namespace tessaro
