#pragma once

#include <tessaro/Export.h>
#include <velmora/ScriptObject.h>

namespace tessaro::dropouts {

/// What scripts know about the reasons of dropouts: the class "DropoutReason" in the namespace "tessaro", of
/// which there are no objects, only constants.
///
///     CLOCK_JITTER, PREFETCH_REQUESTS_NOT_DISPATCHED, PREFETCH_TIME_LIMIT_EXCEEDED, AUDIO_NOT_IN_CACHE,
///     IO_TIME_LIMIT_EXCEEDED, IO_BUFFER_UNDERRUN      the numbers of `DropoutReason`
class TESSARO_EXPORT DropoutReasonObject : public velmora::ScriptObject
{
public:
    static void DefineObject(velmora::definition::ScriptObjectDefinition<DropoutReasonObject>& ioDefinition);

    DropoutReasonObject();
    ~DropoutReasonObject() override;
};

} // namespace tessaro::dropouts
