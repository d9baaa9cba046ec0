#pragma once

#include <memory>

#include <tessaro/Export.h>

namespace tessaro {

/// Keeps the last samples of one channel and lets readers look back at them. Nothing is consumed by reading.
///
/// Life cycle: `Init` gives it its length, `Write` appends, and once as many samples are written as it holds
/// each new sample takes the place of the oldest.
///
/// `Init` allocates [control]; all else does not and does not throw [real-time]. One thread at a time. Not
/// copied.
class TESSARO_EXPORT DelayBuffer
{
public:
    /// What is held, oldest first, in at most two runs: `[mFirstBegin, mFirstEnd)` and then `[mSecondBegin,
    /// mSecondEnd)`. Valid until the next `Write` or `Init`.
    struct WorkChunks
    {
        const float* mFirstBegin;
        const float* mFirstEnd;
        const float* mSecondBegin;
        const float* mSecondEnd;
    };

    /// Holds nothing.
    DelayBuffer() = default;
    DelayBuffer(const DelayBuffer&) = delete;
    DelayBuffer& operator=(const DelayBuffer&) = delete;
    ~DelayBuffer();

    /// Room for `inSize` samples, none of them valid yet. Throws `std::bad_alloc`, and then holds nothing.
    /// [control]
    void Init(int inSize);

    /// Forgets all samples, and writes to none.
    void Reset();

    /// Appends `inCount` samples; of more than the size only the last are taken.
    void Write(const float* inSource, int inCount);

    /// Copies the oldest samples behind the `inSkip` oldest ones, up to `inCount`. Returns how many there
    /// were.
    int Read(float* outDest, int inCount, int inSkip) const;

    /// Samples that can be read: the size once so many were written, before that as many as were.
    [[nodiscard]] int GetValidDataSize() const;

    /// What is held without its `inSkip` oldest samples. Both runs are empty when nothing is left. When one
    /// run is enough, it is the first.
    [[nodiscard]] WorkChunks GetWorkChunks(int inSkip) const;

private:
    int mSize = 0;
    std::unique_ptr<float[]> mStart;
    float* mEnd = nullptr;
    float* mWrite = nullptr;
    bool mIsWrapped = false;
};

} // namespace tessaro
