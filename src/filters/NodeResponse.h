#pragma once

#include <tessaro/filters/FIR.h>

namespace tessaro {

/// Adds a node in dB to `inN / 2 + 1` bins.
void AddNode(const NodeFR& inNode, float* ioDecibels, unsigned inN, float inSampleRate);

} // namespace tessaro
