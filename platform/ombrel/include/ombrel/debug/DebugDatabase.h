#pragma once

#include <map>
#include <string>
#include <string_view>

#include <ombrel/Export.h>

namespace ombrel::debug {

/// Named text entries by which developers change the program's behaviour while it runs, such as
/// "tessaro.dropouts.ShowAudioDropoutWarnings" = "true". Nothing is kept on disk: the host fills it, from
/// where it likes. All calls take a lock; none belongs on a real-time thread.
class OMBREL_EXPORT DebugDatabase
{
public:
    using Entries = std::map<std::string, std::string, std::less<>>;

    /// The one of the process.
    static DebugDatabase& Instance();

    /// The entry's text, `inDefault` when nobody has set it. An entry that was asked for shows up in
    /// `GetEntries` with the default of the first to ask, so that a host can offer it. [any thread]
    [[nodiscard]] std::string GetEntry(std::string_view inName, std::string_view inDefault);
    /// Sets an entry. [any thread]
    void SetEntry(std::string_view inName, std::string_view inText);
    /// Back to what the callers of `GetEntry` give as default. [any thread]
    void RemoveEntry(std::string_view inName);
    /// Every entry that was set or asked for, with the text that holds. [any thread]
    [[nodiscard]] Entries GetEntries() const;

private:
    struct State;

    DebugDatabase();
    ~DebugDatabase() = default;

    State& mState;
};

} // namespace ombrel::debug
