#pragma once

#include <cstdint>
#include <memory>

#include <tessaro/Export.h>
#include <velmora/ScriptObject.h>

namespace tessaro::dropouts {

class DropoutReporter;

/// A `DropoutReporter` for scripts: the class "DropoutReporter" in the namespace "tessaro".
///
///     var reporter = new tessaro.DropoutReporter();
///     reporter.getTotalDropoutCount()
///     reporter.getDropoutCount(tessaro.DropoutReason.AUDIO_NOT_IN_CACHE)
///     reporter.reset()
///
/// It counts what the program processes (`ProcessReportedDropouts`) during its life, under a name of its own
/// making that no other reporter has. Asking for a reason that does not exist throws
/// `velmora::ParameterErrorException`. [control]
class TESSARO_EXPORT DropoutReporterObject : public velmora::ScriptObject
{
public:
    static void
    DefineObject(velmora::definition::ScriptObjectDefinition<DropoutReporterObject>& ioDefinition);

    /// Counts from now on.
    DropoutReporterObject();
    ~DropoutReporterObject() override;

private:
    [[nodiscard]] std::int32_t GetTotalDropoutCount() const;
    [[nodiscard]] std::int32_t GetDropoutCount(std::int64_t inReason) const;
    void Reset();

    std::shared_ptr<DropoutReporter> mReporter;
};

} // namespace tessaro::dropouts
