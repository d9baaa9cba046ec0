#pragma once

#include <algorithm>

namespace tessaro {

/// Makes `2 * inOrder + 2` coefficients pass everything; order 0 and below leaves the array untouched.
template <typename T>
void FillIdentity(T* outCoefficients, int inOrder)
{
    if (inOrder <= 0) {
        return;
    }
    std::fill_n(outCoefficients, 2 * inOrder + 2, T(0));
    outCoefficients[0] = T(1);
    outCoefficients[inOrder + 1] = T(1);
}

} // namespace tessaro
