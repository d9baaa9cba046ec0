#include <tessaro/dropouts/DropoutContext.h>

#include "DropoutManager.h"

namespace tessaro::dropouts {

DropoutContext::DropoutContext() : DropoutContext(std::u16string()) {}

DropoutContext::DropoutContext(const std::basic_string<char16_t>& inName)
    : mContextId(DropoutManager::Instance().AddContext(inName))
{
}

DropoutContext::~DropoutContext()
{
    DropoutManager::Instance().RemoveContext(mContextId);
}

void DropoutContext::SetName(const std::basic_string<char16_t>& inName)
{
    DropoutManager::Instance().SetContextName(mContextId, inName);
}

void DropoutContext::ReportDropout(const kestrin::FrameRate& inRate, const kestrin::TickTime& inTime,
                                   DropoutReason inReason) const noexcept
{
    DropoutManager::Instance().ReportDropout(
        {mContextId, inRate.GetTicksPerFrame(), inTime.GetTicks(), static_cast<std::uint32_t>(inReason)});
}

} // namespace tessaro::dropouts
