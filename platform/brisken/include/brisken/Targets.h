#pragma once

#include <string>
#include <vector>

#include <brisken/Export.h>

/// Which instruction set the kernels of this library run on.
///
/// Every kernel is compiled once for each target and the best target of the machine is chosen once, when the
/// library is loaded. The choice is process-wide. Results differ between targets only within the rounding
/// that each kernel's header states.
namespace brisken {

/// Name of the target that runs now: "AVX3" (AVX-512), "AVX2", "SSE4", "SCALAR" or "EMU128" (both without
/// vector instructions; the compiler decides which of the two is built), or the vector library's name for the
/// target on other machines. [any thread]
BRISKEN_EXPORT std::string GetActiveTarget();

/// Names of all targets that this build holds and this machine can run, best first. [any thread]
BRISKEN_EXPORT std::vector<std::string> GetSupportedTargets();

/// Makes every kernel run on the named target from the next call on, so that tests and benchmarks can visit
/// each. Returns false, and changes nothing, when the name is not among `GetSupportedTargets`. No kernel may
/// be running. Transform and filter states stay usable across a change. [control]
BRISKEN_EXPORT bool SetActiveTarget(const std::string& inName);

/// Goes back to the best target of the machine. [control]
BRISKEN_EXPORT void ResetActiveTarget();

} // namespace brisken
