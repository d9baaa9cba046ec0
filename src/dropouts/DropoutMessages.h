#pragma once

#include <string>

#include <kestrin/FrameRate.h>
#include <kestrin/TickTime.h>
#include <ombrel/string/StringTypes.h>

#include <tessaro/dropouts/DropoutReason.h>

namespace tessaro::dropouts {

struct DropoutMessage
{
    ombrel::UTF8String mTitle;
    ombrel::UTF8String mDescription;
};

/// What a user can do about a dropout; only the reason's name for one that is not for users.
DropoutMessage ComposeAdvice(const std::u16string& inContextName, DropoutReason inReason);

/// What happened, where and when, in one line.
ombrel::UTF8String ComposeLine(const std::u16string& inContextName, kestrin::FrameRate inRate,
                               kestrin::TickTime inTime, DropoutReason inReason);

} // namespace tessaro::dropouts
