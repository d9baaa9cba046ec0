#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace brisken::testing {

template <typename T>
std::vector<T> Noise(std::size_t inCount, unsigned inSeed)
{
    std::mt19937 generator(inSeed);
    std::uniform_real_distribution<T> distribution(-1, 1);
    std::vector<T> values(inCount);
    std::generate(values.begin(), values.end(), [&] { return distribution(generator); });
    return values;
}

/// Calls `inProcess(begin, count)` for pieces of a stream, of all kinds of sizes.
template <typename Process>
void ForEachPiece(std::size_t inTotal, Process inProcess)
{
    constexpr std::size_t sizes[] = {1, 2, 3, 0, 5, 64, 7, 129, 31, 4097, 16, 513, 255, 1};
    std::size_t begin = 0;
    for (std::size_t piece = 0; begin < inTotal; ++piece) {
        const auto count = std::min(sizes[piece % std::size(sizes)], inTotal - begin);
        inProcess(begin, count);
        begin += count;
    }
}

} // namespace brisken::testing
