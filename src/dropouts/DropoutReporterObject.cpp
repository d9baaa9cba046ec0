#include <tessaro/dropouts/DropoutReporterObject.h>

#include <ombrel/utility/Guid.h>
#include <velmora/ScriptException.h>
#include <velmora/definition/ScriptObjectDefinition.h>

#include <tessaro/dropouts/DropoutReporter.h>

namespace tessaro::dropouts {

namespace {

const velmora::definition::ScriptObjectDefinition<DropoutReporterObject>
    kDefinition("DropoutReporter", "Dropout reporters can be used to track the number of dropouts that occur "
                                   "during their lifetime.");

} // namespace

DropoutReporterObject::DropoutReporterObject()
    : mReporter(DropoutReporter::Create(ombrel::utility::Guid::CreateUnique().ToString()))
{
}

DropoutReporterObject::~DropoutReporterObject() = default;

void DropoutReporterObject::DefineObject(
    velmora::definition::ScriptObjectDefinition<DropoutReporterObject>& ioDefinition)
{
    ioDefinition.AddNamespace("tessaro");
    ioDefinition.AddConstructor("Create a new instance.");
    ioDefinition.AddMethod("getTotalDropoutCount", "Get the number of total dropouts.",
                           &DropoutReporterObject::GetTotalDropoutCount);
    ioDefinition.AddMethod("getDropoutCount",
                           "Get the number of dropouts for a specified dropout reason. Use the constants "
                           "provided by DropoutReason as argument.",
                           &DropoutReporterObject::GetDropoutCount,
                           velmora::ParameterType<std::int64_t>("reason"));
    ioDefinition.AddMethod("reset", "Reset the dropout reporter.", &DropoutReporterObject::Reset);
}

std::int32_t DropoutReporterObject::GetTotalDropoutCount() const
{
    return mReporter->GetTotalDropoutCount();
}

std::int32_t DropoutReporterObject::GetDropoutCount(std::int64_t inReason) const
{
    if (static_cast<std::uint64_t>(inReason) >= kDropoutReasonCount) {
        throw velmora::ParameterErrorException("The provided dropout reason is unknown. Use the constants "
                                               "provided by DropoutReason as argument.");
    }
    return mReporter->GetDropoutCount(static_cast<DropoutReason>(inReason));
}

void DropoutReporterObject::Reset()
{
    mReporter->Reset();
}

} // namespace tessaro::dropouts
