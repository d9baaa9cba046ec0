#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ChainResponse.h"

namespace host {

/// Draws magnitude, phase and group delay below one another, over the frequency: what the effects tell as a
/// wide pale line, what was measured as a thin one on it. Curves that are NaN throughout are left out.
void DrawResponse(const std::string& inTitle, const std::string& inDetails,
                  const std::vector<double>& inFrequencies, const ChainResponse& inTold,
                  const ChainResponse& inMeasured, const std::filesystem::path& inPath);

} // namespace host
