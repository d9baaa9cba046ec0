#pragma once

#include <cstddef>
#include <memory>

namespace tessaro {

/// The past of a stream in double precision, as a window that moves on sample by sample over contiguous
/// memory. Room is made by moving the past back to the front, once in some thousand samples.
///
/// The window ends with the first sample that is not done with, which may or may not be there already, and
/// with more behind it. Some samples on both sides of what is there can be read too; those behind it hold
/// leftovers, which are finite whenever all that is there is.
class SampleHistory
{
public:
    /// `inBefore` and `inBehind` are how many samples beyond window and content can be read. Throws
    /// `std::bad_alloc`.
    SampleHistory(int inWindow, int inBefore, int inBehind);
    SampleHistory(const SampleHistory& inOther);
    SampleHistory& operator=(const SampleHistory&) = delete;

    /// Zeros everywhere, and nothing is ahead.
    void Clear();

    /// Steps of the window that there is room for in one go; at least this many.
    static constexpr int kMostSteps = 2048;

    /// Makes room for up to `kMostSteps` samples ahead.
    void MakeRoom(int inSteps);

    /// Puts samples behind the last one. Room is there.
    void Append(const float* inSamples, int inCount);

    /// Samples that are there from the window's last one on
    [[nodiscard]] int GetNumAhead() const { return mNumAhead; }

    /// Moves the window on; so many samples are there.
    void Advance(int inSteps);

    [[nodiscard]] const double* GetWindow() const { return mSamples.get() + mPosition; }

    /// False from the first NaN or infinity on, up to the first `MakeRoom` that has to move after it is gone.
    [[nodiscard]] bool IsFinite() const { return mIsFinite; }

private:
    struct FreeSamples
    {
        void operator()(double* inSamples) const;
    };
    using Samples = std::unique_ptr<double[], FreeSamples>;

    [[nodiscard]] static Samples Allocate(int inSize);
    void MoveToFront();

    int mWindow;
    int mBefore;
    int mRoom; ///< for window positions
    int mSize;
    Samples mSamples;
    int mPosition;
    int mNumAhead = 0;
    bool mIsFinite = true;
};

} // namespace tessaro
