#pragma once

#include <string>

#include <tessaro/dropouts/DropoutContext.h>
#include <velmora/ScriptObject.h>

namespace host {

/// A source of dropouts in scripts: the class "DropoutContext" in the namespace "host", to try out
/// `tessaro.DropoutReporter` with.
class DropoutContextObject : public velmora::ScriptObject
{
public:
    static void DefineObject(velmora::definition::ScriptObjectDefinition<DropoutContextObject>& ioDefinition);

    explicit DropoutContextObject(const std::u16string& inName) : mContext(inName) {}

private:
    void Report(unsigned inReason, double inSeconds);

    tessaro::dropouts::DropoutContext mContext;
};

} // namespace host
