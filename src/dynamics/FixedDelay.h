#pragma once

#include <algorithm>
#include <vector>

namespace tessaro::dynamics {

/// Delays a row by exactly its length, which begins as 0, in place. What came before the first sample is 0.
///
/// `SetLength` allocates [control]; all else is [real-time]. One thread at a time.
class FixedDelay
{
public:
    /// Samples; clears. [control]
    void SetLength(unsigned inLength)
    {
        mRing.assign(inLength, 0.0f);
        mPosition = 0;
    }
    [[nodiscard]] unsigned GetLength() const { return static_cast<unsigned>(mRing.size()); }

    /// Makes room for delays up to this one. [control]
    void Reserve(unsigned inLength) { mRing.reserve(inLength); }

    void Process(unsigned inCount, float* ioData)
    {
        if (mRing.empty()) {
            return;
        }
        while (inCount != 0) {
            const unsigned run = std::min(inCount, GetLength() - mPosition);
            std::swap_ranges(ioData, ioData + run, mRing.data() + mPosition);
            mPosition = mPosition + run == GetLength() ? 0 : mPosition + run;
            ioData += run;
            inCount -= run;
        }
    }

    void Reset() { SetLength(GetLength()); }

private:
    std::vector<float> mRing;
    unsigned mPosition = 0; ///< of the oldest sample
};

} // namespace tessaro::dynamics
