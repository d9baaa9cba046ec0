#include "contract/Contract.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "contract/Checks.h"

namespace tessaro::contract {

namespace {

struct Entry
{
    Promise mPromise;
    std::string_view mName;
    std::string (*mCheck)(const ContractTerms&);
};

constexpr std::array kEntries = {
    Entry{Promise::kSplits, "any split into blocks gives the same", CheckSplits},
    Entry{Promise::kSilence, "silent channels are not read", CheckSilence},
    Entry{Promise::kReset, "a reset gives a fresh object", CheckReset},
    Entry{Promise::kPoison, "NaN and infinity do not outlive a reset", CheckPoison},
    Entry{Promise::kLatency, "the latency is the one reported", CheckLatency},
    Entry{Promise::kNoAllocation, "processing does not allocate", CheckNoAllocation},
    Entry{Promise::kInPlace, "in place gives the same", CheckInPlace},
    Entry{Promise::kFinite, "all output is finite", CheckFinite},
    Entry{Promise::kGrowth, "blocks above the maximum grow the processor", CheckGrowth},
};

const Entry& Find(Promise inPromise)
{
    return *std::find_if(kEntries.begin(), kEntries.end(),
                         [&](const Entry& inEntry) { return inEntry.mPromise == inPromise; });
}

} // namespace

std::string_view NameOf(Promise inPromise)
{
    return Find(inPromise).mName;
}

std::string CheckPromise(const ContractTerms& inTerms, Promise inPromise)
{
    return Find(inPromise).mCheck(inTerms);
}

void ExpectKeepsContract(const ContractTerms& inTerms)
{
    for (const auto& entry : kEntries) {
        if (const auto exception = inTerms.mExceptions.find(entry.mPromise);
            exception != inTerms.mExceptions.end()) {
            EXPECT_FALSE(exception->second.empty()) << entry.mName << ": an exception wants its reason";
            continue;
        }
        EXPECT_EQ(entry.mCheck(inTerms), "") << entry.mName;
    }
}

} // namespace tessaro::contract
