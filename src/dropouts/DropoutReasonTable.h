#pragma once

#include <tessaro/dropouts/DropoutReason.h>

namespace tessaro::dropouts {

/// All that is said about a reason, and where.
struct DropoutReasonTexts
{
    const char* mName;              ///< in traces, and as title of what has no text for users
    const char* mConstant;          ///< in scripts
    const char* mScriptDescription; ///< in the documentation of scripts
    const char* mMonitorLabel;      ///< in the debug monitor
    const char* mMessageKey;        ///< for people, to be localised; null for no message
};

/// Throws `ombrel_exception` for an unknown reason.
const DropoutReasonTexts& GetTexts(DropoutReason inReason);

/// Whether a user can do something about it.
constexpr bool IsUserFacing(DropoutReason inReason)
{
    return DropoutReason::kAudioNotInCache <= inReason && inReason < DropoutReason::kIOBufferUnderrun;
}

} // namespace tessaro::dropouts
