#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

/// A bar on standard error for work that takes above a second, if that is a terminal; otherwise nothing at
/// all.
class Progress
{
public:
    Progress(std::string inLabel, std::int64_t inTotal);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Tells how much of the total is done. Cheap enough to call for each block.
    void Update(std::int64_t inDone);

private:
    using Clock = std::chrono::steady_clock;

    std::string mLabel;
    std::int64_t mTotal;
    bool mIsTerminal;
    bool mIsShown = false;
    Clock::time_point mNextDraw;
};

} // namespace host
