#include <brisken/Targets.h>

#include <algorithm>
#include <cstdint>

#include <hwy/highway.h>

#include "Dispatch.h"

namespace brisken {

namespace details {

std::atomic<std::size_t> gTargetIndex{0};

} // namespace details

namespace {

void Choose(std::int64_t inTargets)
{
    auto& chosen = hwy::GetChosenTarget();
    chosen.Update(inTargets);
    details::gTargetIndex.store(chosen.GetIndex(), std::memory_order_relaxed);
}

/// The lowest bit is the best target.
std::int64_t BestOf(std::int64_t inTargets)
{
    return inTargets & -inTargets;
}

std::int64_t SupportedTargets()
{
    return hwy::SupportedTargets() & HWY_TARGETS;
}

const bool gChosenAtLoad = [] {
    Choose(hwy::SupportedTargets());
    return true;
}();

} // namespace

std::string GetActiveTarget()
{
    for (auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::ChosenTarget candidate;
        candidate.Update(target);
        if (candidate.GetIndex() == details::GetTargetIndex()) {
            return hwy::TargetName(target);
        }
    }
    return hwy::TargetName(BestOf(SupportedTargets()));
}

std::vector<std::string> GetSupportedTargets()
{
    std::vector<std::string> names;
    for (auto target : hwy::SupportedAndGeneratedTargets()) {
        names.emplace_back(hwy::TargetName(target));
    }
    return names;
}

bool SetActiveTarget(const std::string& inName)
{
    for (auto target : hwy::SupportedAndGeneratedTargets()) {
        if (inName == hwy::TargetName(target)) {
            Choose(target);
            return true;
        }
    }
    return false;
}

void ResetActiveTarget()
{
    Choose(hwy::SupportedTargets());
}

} // namespace brisken
