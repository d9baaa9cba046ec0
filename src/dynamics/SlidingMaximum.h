#pragma once

#include <vector>

#include <tessaro/Export.h>

namespace tessaro::dynamics {

/// The largest of the last samples of a row, for each of its samples. What came before the first one is 0.
///
/// Method: a complete binary tree of maxima over the window, its leaves written in a circle. A sample changes
/// one leaf and the maxima on the way from there to the root, and so costs log2 of the window.
///
/// `SetWindow` allocates [control]; all else is [real-time]. One thread at a time. A NaN is as good as gone
/// when a window has passed. Exported for the tests only.
class TESSARO_EXPORT SlidingMaximum
{
public:
    /// Number of samples looked at, from 1, less counts as 1; resets. A window of 1 copies. [control]
    void SetWindow(unsigned inWindow);
    [[nodiscard]] unsigned GetWindow() const { return mWindow; }

    /// Makes room for windows up to this one. [control]
    void Reserve(unsigned inWindow) { mTree.reserve(2 * static_cast<std::size_t>(inWindow)); }

    /// The rows may be the same.
    void Process(unsigned inCount, const float* inData, float* outMaxima);

    /// All zeros.
    void Reset();

private:
    std::vector<float> mTree = {0.0f, 0.0f}; ///< node n has the children 2 n and 2 n + 1; the root is 1
    unsigned mWindow = 1;
    unsigned mPosition = 0; ///< of the oldest leaf
};

} // namespace tessaro::dynamics
