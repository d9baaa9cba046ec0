#pragma once

#include <cstddef>

/// Indices of the parameters of `HardLimit`
namespace tessaro::hardlimit {

constexpr std::size_t kCeiling = 0;
constexpr std::size_t kInputGain = 1;
constexpr std::size_t kLookAhead = 2;
constexpr std::size_t kRelease = 3;
constexpr std::size_t kLinkChannels = 4;
constexpr std::size_t kTowardsCeiling = 5;
constexpr std::size_t kTruePeak = 6;

} // namespace tessaro::hardlimit
