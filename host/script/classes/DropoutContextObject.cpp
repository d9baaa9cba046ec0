#include "script/classes/DropoutContextObject.h"

#include <tessaro/dropouts/DropoutReporter.h>
#include <velmora/ScriptException.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace host {

namespace {

const velmora::definition::ScriptObjectDefinition<DropoutContextObject>
    kDefinition("DropoutContext", "A source of dropouts, to try out reporters with.");

} // namespace

void DropoutContextObject::DefineObject(
    velmora::definition::ScriptObjectDefinition<DropoutContextObject>& ioDefinition)
{
    using velmora::ParameterType;
    ioDefinition.AddNamespace("host");
    ioDefinition.AddConstructor(
        "Create a source.",
        [](const std::u16string& inName) {
            return velmora::utils::CreateScriptObject<DropoutContextObject>(inName);
        },
        ParameterType<std::u16string>("name"));
    ioDefinition.AddMethod("report", "Report a dropout. The reporters see it once it is processed.",
                           &DropoutContextObject::Report, ParameterType<unsigned>("reason"),
                           ParameterType<double>("seconds"));
    ioDefinition.AddMethod("process", "Process all dropouts that were reported, those of other sources, too.",
                           [](DropoutContextObject&) { tessaro::dropouts::ProcessReportedDropouts(); });
}

void DropoutContextObject::Report(unsigned inReason, double inSeconds)
{
    if (inReason >= tessaro::dropouts::kDropoutReasonCount) {
        throw velmora::ParameterErrorException("there is no such reason, see tessaro.DropoutReason");
    }
    constexpr kestrin::TickTime kSecond(kestrin::kTicksPerSecond);
    mContext.ReportDropout(kestrin::FrameRate::FromFramesPerSecond(48000), kSecond * inSeconds,
                           static_cast<tessaro::dropouts::DropoutReason>(inReason));
}

} // namespace host
