#include "DropoutMessages.h"

#include <kestrin/TimeDisplay.h>
#include <kestrin/Timecode.h>
#include <ombrel/config/Application.h>
#include <ombrel/config/Localizer.h>
#include <ombrel/string/ReplaceInString.h>
#include <ombrel/string/Unicode.h>

#include <tessaro/dropouts/DropoutReporter.h>

#include "DropoutReasonTable.h"

namespace tessaro::dropouts {

using ombrel::UTF8String;
using ombrel::string::ReplaceInString;
using ombrel::string::UTF16to8;

namespace {

UTF8String Localize(const char* inKey)
{
    return UTF16to8(ombrel::config::Localizer::Get(inKey));
}

} // namespace

DropoutMessage ComposeAdvice(const std::u16string& inContextName, DropoutReason inReason)
{
    switch (inReason) {
    case DropoutReason::kAudioNotInCache:
        return {Localize("$$$/tessaro/dropouts/AudioNotInCache/title=Can't access audio"),
                ReplaceInString(Localize("$$$/tessaro/dropouts/AudioNotInCache/description=The audio for @0 "
                                         "can't be read quickly enough from storage. Please check your "
                                         "storage and try again."),
                                UTF16to8(inContextName))};
    case DropoutReason::kIOTimeLimitExceeded:
        return {Localize("$$$/tessaro/dropouts/IOTimeLimitExceeded/title=Can't render audio"),
                ReplaceInString(
                    Localize("$$$/tessaro/dropouts/IOTimeLimitExceeded/description=@0 can't render your "
                             "audio due to high CPU usage. Try using fewer audio effects, simplifying your "
                             "timeline, or increasing the I/O buffer size in Audio Hardware Preferences."),
                    ombrel::config::GetApplicationName())};
    default:
        break;
    }
    // For the day on which a reason becomes user-facing and nobody has written its text.
    if (IsUserFacing(inReason)) {
        throw ombrel::ombrel_exception("There is no zstring for this user-facing dropout reason.",
                                       kResultDropoutFailure);
    }
    return {ombrel::string::Std8ToUTF8String(GetTexts(inReason).mName), {}};
}

UTF8String ComposeLine(const std::u16string& inContextName, kestrin::FrameRate inRate,
                       kestrin::TickTime inTime, DropoutReason inReason)
{
    const char* const key = GetTexts(inReason).mMessageKey;
    const UTF8String message = key != nullptr ? Localize(key) : UTF8String();
    if (inContextName.empty()) {
        return ReplaceInString(Localize("$$$/tessaro/dropouts/AudioDropoutUnknown=@0!"), message);
    }
    const UTF8String name = UTF16to8(inContextName);
    if (inRate.GetTicksPerFrame() == kestrin::FrameRate::kInvalidTicks || inTime.IsNoTime()) {
        return ReplaceInString(Localize("$$$/tessaro/dropouts/AudioDropoutUnknownTime=@0 in \"@1\""), message,
                               name);
    }
    const kestrin::TimeDisplay display(kestrin::TimeDisplayType::kMilliseconds);
    return ReplaceInString(Localize("$$$/tessaro/dropouts/AudioDropoutKnownTime=@0 at @1 in \"@2\""), message,
                           UTF16to8(kestrin::TimeToTimecode(inTime, inRate, display, 0)), name);
}

} // namespace tessaro::dropouts
