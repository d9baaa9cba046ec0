#include "dynamics/WindowMaximum.h"

#include <algorithm>

namespace tessaro {

void WindowMaximum::Init(unsigned inMaxLength)
{
    mValues.resize(inMaxLength);
}

void WindowMaximum::Reset(unsigned inLength)
{
    mLength = inLength;
    mFilled = 0;
    mLargest = 0.0f;
    std::fill_n(mValues.begin(), inLength, 0.0f);
}

float WindowMaximum::FinishStretch()
{
    const float largest = mLargest;
    for (unsigned i = mLength - 1; i != 0; --i) {
        mValues[i - 1] = std::max(mValues[i - 1], mValues[i]);
    }
    mFilled = 0;
    mLargest = 0.0f;
    return largest;
}

} // namespace tessaro
