#pragma once

#include <tessaro/filters/SectionCoefficients.h>

namespace tessaro {

/// Computes the coupled form of a section from its direct form, which stays as it is.
void ConvertToStateVariableForm(SectionCoefficients<double>& ioSection);

} // namespace tessaro
