#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// What happens to the chain while it plays.
struct ControlEvent
{
    enum class Action
    {
        kSet,    ///< other values for parameters of an effect, which keeps the rest
        kInsert, ///< an effect
        kRemove, ///< an effect
        kMode    ///< bypass, or back to processing
    };

    double mSeconds = 0.0; ///< on the timeline of the input
    Action mAction = Action::kMode;
    std::size_t mPosition = 0; ///< in the chain, counted from 1
    std::string mText;         ///< the parameters, the effect, or the mode
    std::string mPlace;        ///< "FILE:LINE", for messages
};

inline constexpr const char* kModeBypass = "bypass";
inline constexpr const char* kModeProcess = "process";

/// Reads a control file from its text; `inPath` is for messages. One event a line, in any order of time,
/// blank lines and what follows a # at the beginning of a line passed over.
///
///     # seconds  what to do
///     0.5   set 1 gain=-6
///     1     insert 2 delay:time=20
///     1.5   remove 1
///     2     mode bypass
///     2.5   mode process
///
/// Positions count from 1; `insert` puts the effect at the position, one behind the last one appends it.
/// Returns the events by time, those of the same time as they stand. Throws `FileError` with line and column
/// for what is no such line; effects and parameters are checked when they are posted.
std::vector<ControlEvent> ParseControl(const std::string& inPath, std::string_view inText);

/// The same from the file. Throws `FileError`, also when it cannot be read.
std::vector<ControlEvent> ReadControlFile(const std::string& inPath);

} // namespace host
