#pragma once

#include <vector>

namespace tessaro {

/// Largest of the last values, at a constant cost for each. The window moves over stretches of its own
/// length: what is left of the stretch before is looked up as the largest of its last values, which are found
/// for all places at once whenever a stretch is full.
class WindowMaximum
{
public:
    /// Room for the longest window. [control]
    void Init(unsigned inMaxLength);
    /// Length of at least 1, and zeros in the window.
    void Reset(unsigned inLength);

    /// Takes a value of at least 0, and returns the largest in the window.
    float Push(float inValue)
    {
        mValues[mFilled] = inValue;
        mLargest = mLargest < inValue ? inValue : mLargest;
        if (++mFilled == mLength) {
            return FinishStretch();
        }
        const float before = mValues[mFilled];
        return before < mLargest ? mLargest : before;
    }

private:
    float FinishStretch();

    /// The present stretch up to `mFilled`; behind that, of the stretch before, the largest from there on
    std::vector<float> mValues;
    unsigned mLength = 1;
    unsigned mFilled = 0;
    float mLargest = 0.0f; ///< of the present stretch
};

} // namespace tessaro
