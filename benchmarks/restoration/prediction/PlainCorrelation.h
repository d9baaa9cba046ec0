#pragma once

namespace tessaro::plain {

/// out[m] = sum of x[n] x[n + m] for `inLags` lags, at most the length
void Correlate(const float* inFrame, unsigned inLength, float* outCorrelation, unsigned inLags);

} // namespace tessaro::plain
