#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace tessaro::testing {

/// Row lengths around those of all vectors from 1 to 16 lanes: every remainder after no, one and several
/// rounds of a loop that takes four vectors a time, and a length of many rounds.
inline std::vector<unsigned> RowLengths()
{
    std::vector<unsigned> lengths(70);
    for (unsigned i = 0; i < lengths.size(); ++i) {
        lengths[i] = i;
    }
    for (const unsigned lanes : {8u, 16u}) {
        lengths.insert(lengths.end(), {8 * lanes - 1, 8 * lanes + 2, 9 * lanes + 7});
    }
    lengths.push_back(1031);
    return lengths;
}

/// A row that begins at a chosen distance from an aligned address. Guard samples before and behind it must
/// survive what is tested; under AddressSanitizer those behind it may not even be read.
template <class T>
class GuardedRow
{
public:
    GuardedRow(unsigned inCount, unsigned inMisalignment = 0)
        : mCount(inCount), mStorage(inCount + 2 * kGuard + inMisalignment + 64 / sizeof(T))
    {
        std::memset(static_cast<void*>(mStorage.data()), kPattern, mStorage.size() * sizeof(T));
        const auto address = reinterpret_cast<std::uintptr_t>(mStorage.data() + kGuard);
        const auto toAligned = (64 - address % 64) % 64 / sizeof(T);
        mRow = mStorage.data() + kGuard + toAligned + inMisalignment;
        ASAN_POISON_MEMORY_REGION(mRow + inCount, kGuard * sizeof(T));
    }

    GuardedRow(unsigned inMisalignment, const std::vector<T>& inContents)
        : GuardedRow(static_cast<unsigned>(inContents.size()), inMisalignment)
    {
        std::copy(inContents.begin(), inContents.end(), mRow);
    }

    GuardedRow(const GuardedRow&) = delete;
    GuardedRow& operator=(const GuardedRow&) = delete;

    ~GuardedRow()
    {
        ASAN_UNPOISON_MEMORY_REGION(mRow + mCount, kGuard * sizeof(T));
        EXPECT_TRUE(IsIntact(mRow - kGuard)) << "guard samples before the row were written";
        EXPECT_TRUE(IsIntact(mRow + mCount)) << "guard samples behind the row were written";
    }

    T* Get() { return mRow; }
    T& operator[](std::size_t inIndex) { return mRow[inIndex]; }
    std::vector<T> Contents() const { return {mRow, mRow + mCount}; }

private:
    static constexpr unsigned kGuard = 32; // elements: two vectors of float
    static constexpr unsigned char kPattern = 0xA5;

    static bool IsIntact(const T* inGuard)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(inGuard);
        for (std::size_t i = 0; i < kGuard * sizeof(T); ++i) {
            if (bytes[i] != kPattern) {
                return false;
            }
        }
        return true;
    }

    unsigned mCount;
    std::vector<T> mStorage;
    T* mRow;
};

/// Uniform in -2 to 2, from a fixed seed.
template <class T>
std::vector<T> RandomRow(unsigned inCount, unsigned inSeed)
{
    std::mt19937 generator(inSeed);
    std::uniform_real_distribution<T> uniform(T(-2), T(2));
    std::vector<T> row(inCount);
    for (auto& value : row) {
        value = uniform(generator);
    }
    return row;
}

/// The same with NaN, infinities, zeros of both signs, denormal and large numbers strewn in.
template <class T>
std::vector<T> RandomRowWithSpecials(unsigned inCount, unsigned inSeed)
{
    using Limits = std::numeric_limits<T>;
    const std::vector<T> specials = {
        Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), T(0), -T(0), Limits::denorm_min(),
        -Limits::min() / 2,  Limits::max() / 4,  -Limits::max() / 4};
    auto row = RandomRow<T>(inCount, inSeed);
    std::mt19937 generator(inSeed + 1000);
    for (auto& value : row) {
        const auto pick = generator() % (4 * specials.size());
        value = pick < specials.size() ? specials[pick] : value;
    }
    return row;
}

/// Equal, or both NaN.
template <class T>
bool IsSame(T inA, T inB)
{
    return inA == inB || (std::isnan(inA) && std::isnan(inB));
}

} // namespace tessaro::testing
