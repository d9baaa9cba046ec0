#include <tessaro/utility/Fade.h>

#include <array>
#include <cstddef>

namespace tessaro {

namespace {

constexpr int kLeastValue = -100;
constexpr int kMostValue = 100;

/// One entry for each shape value, from the least upward.
using OppositeTable = std::array<signed char, kMostValue - kLeastValue + 1>;

// For each shape value that of the other side of the crossfade, so that the two curves meet at -3 dB as
// nearly as whole values allow. At the ends of the range the opposite is held at what the range has.

// clang-format off
constexpr OppositeTable kOppositeCosine = {
    86, 85, 85, 85, 84, 84, 84, 83, 83, 83, 82, 82, 81, 81, 81, 80, 80, 80, 79, 79, // from -100
    79, 78, 78, 78, 77, 77, 76, 76, 76, 75, 75, 74, 74, 74, 73, 73, 72, 72, 72, 71, // from -80
    71, 70, 70, 69, 69, 68, 68, 68, 67, 67, 66, 66, 65, 65, 64, 64, 63, 63, 62, 62, // from -60
    61, 61, 60, 60, 59, 59, 58, 58, 57, 56, 56, 55, 55, 54, 54, 53, 52, 52, 51, 51, // from -40
    50, 49, 49, 48, 47, 47, 46, 45, 45, 44, 43, 43, 42, 41, 41, 40, 39, 38, 38, 37, // from -20
    36, 35, 34, 34, 33, 32, 31, 30, 29, 28, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, // from 0
    18, 17, 16, 15, 14, 13, 12, 11, 10, 9, 7, 6, 5, 4, 3, 1, 0, -1, -2, -4, // from 20
    -5, -6, -8, -9, -11, -12, -14, -15, -17, -18, -20, -21, -23, -25, -26, -28, -30, -32, -33, -35, // from 40
    -37, -39, -41, -43, -45, -47, -49, -51, -54, -56, -58, -61, -63, -65, -68, -70, -73, -75, -78, -81, // from 60
    -84, -87, -89, -92, -95, -97, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, -100, // from 80
    -100, // 100
};

constexpr OppositeTable kOppositeLog = {
    100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, // from -100
    100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, // from -80
    100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, // from -60
    100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 100, 97, 94, 92, 89, // from -40
    86, 84, 81, 79, 76, 74, 71, 69, 67, 65, 62, 60, 58, 56, 54, 53, 51, 49, 47, 45, // from -20
    44, 42, 40, 39, 37, 36, 34, 33, 32, 30, 29, 28, 26, 25, 24, 23, 22, 20, 19, 18, // from 0
    17, 17, 16, 15, 14, 13, 12, 12, 11, 10, 9, 8, 8, 7, 6, 6, 5, 4, 4, 3, // from 20
    2, 2, 1, 0, 0, -1, -1, -2, -3, -3, -4, -4, -5, -5, -6, -6, -7, -7, -8, -8, // from 40
    -9, -9, -10, -10, -11, -11, -12, -12, -13, -13, -13, -14, -14, -15, -15, -16, -16, -16, -17, -17, // from 60
    -18, -18, -18, -19, -19, -20, -20, -20, -21, -21, -21, -22, -22, -23, -23, -23, -24, -24, -24, -25, // from 80
    -25, // 100
};
// clang-format on

int Find(const OppositeTable& inTable, int inValue)
{
    if (inValue < kLeastValue || inValue > kMostValue) {
        return 0;
    }
    return inTable[static_cast<std::size_t>(inValue - kLeastValue)];
}

} // namespace

int GetOppositeFadeShapeValForConstantPowerCrossfade_Cosine(int inValue)
{
    return Find(kOppositeCosine, inValue);
}

int GetOppositeFadeShapeValForConstantPowerCrossfade_Log(int inValue)
{
    return Find(kOppositeLog, inValue);
}

FadeShape GetOppositeFadeShapeForConstantPowerCrossfade(const FadeShape& inShape)
{
    const bool isLog = inShape.mType == FadeShape::Type::kLogarithmic;
    return {inShape.mType, isLog ? GetOppositeFadeShapeValForConstantPowerCrossfade_Log(inShape.mValue)
                                 : GetOppositeFadeShapeValForConstantPowerCrossfade_Cosine(inShape.mValue)};
}

} // namespace tessaro
