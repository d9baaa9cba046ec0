#pragma once

#include <string>

#include "contract/Contract.h"

/// The checks behind the promises, each as `CheckPromise`.
namespace tessaro::contract {

[[nodiscard]] std::string CheckSplits(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckSilence(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckReset(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckPoison(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckLatency(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckNoAllocation(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckInPlace(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckFinite(const ContractTerms& inTerms);
[[nodiscard]] std::string CheckGrowth(const ContractTerms& inTerms);

} // namespace tessaro::contract
