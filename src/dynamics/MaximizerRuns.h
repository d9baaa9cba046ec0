#pragma once

/// Sizes that the maximizer is built on, in frames.
namespace tessaro::dynamics::maximizer {

/// Each ring delays by one less than its length.
constexpr unsigned kInputRing = 64;
constexpr unsigned kOutputRing = 200;
/// What goes through all steps at once
constexpr unsigned kLongestRun = 256;

} // namespace tessaro::dynamics::maximizer
