#include "dynamics/SlidingMaximum.h"

#include <algorithm>

namespace tessaro::dynamics {

namespace {

/// Writes a leaf and brings the maxima above it up to date. Works for any number of leaves: each has a way
/// to the root, whether or not the tree is balanced. It goes all the way, for where a maximum would stay as
/// it was is hard to foresee, and a wrong guess costs more than the rest of the way.
inline void WriteLeaf(float* ioTree, unsigned inNode, float inValue)
{
    float largest = inValue;
    ioTree[inNode] = inValue;
    for (unsigned node = inNode; node > 1; node /= 2) {
        largest = std::max(largest, ioTree[node ^ 1U]);
        ioTree[node / 2] = largest;
    }
}

} // namespace

void SlidingMaximum::SetWindow(unsigned inWindow)
{
    mWindow = std::max(inWindow, 1U);
    mTree.resize(2 * static_cast<std::size_t>(mWindow));
    Reset();
}

void SlidingMaximum::Process(unsigned inCount, const float* inData, float* outMaxima)
{
    float* const tree = mTree.data();
    unsigned position = mPosition;
    for (unsigned i = 0; i < inCount; ++i) {
        WriteLeaf(tree, mWindow + position, inData[i]);
        position = position + 1 == mWindow ? 0 : position + 1;
        outMaxima[i] = tree[1];
    }
    mPosition = position;
}

void SlidingMaximum::Reset()
{
    std::fill(mTree.begin(), mTree.end(), 0.0f);
    mPosition = 0;
}

} // namespace tessaro::dynamics
