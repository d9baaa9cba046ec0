#include "Progress.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace host {

namespace {

constexpr std::chrono::milliseconds kQuietTime{1000};
constexpr std::chrono::milliseconds kRedrawTime{100};
constexpr int kBarWidth = 40;

} // namespace

Progress::Progress(std::string inLabel, std::int64_t inTotal)
    : mLabel(std::move(inLabel)),
      mTotal(inTotal),
      mIsTerminal(isatty(STDERR_FILENO) != 0),
      mNextDraw(Clock::now() + kQuietTime)
{
}

Progress::~Progress()
{
    if (mIsShown) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::Update(std::int64_t inDone)
{
    if (!mIsTerminal || mTotal <= 0 || Clock::now() < mNextDraw) {
        return;
    }
    mNextDraw = Clock::now() + kRedrawTime;
    mIsShown = true;
    const double fraction = std::clamp(static_cast<double>(inDone) / static_cast<double>(mTotal), 0.0, 1.0);
    const int filled = static_cast<int>(fraction * kBarWidth);
    std::fprintf(stderr, "\r%s [%-*.*s] %3.0f %%", mLabel.c_str(), kBarWidth, filled,
                 "########################################", fraction * 100.0);
    std::fflush(stderr);
}

} // namespace host
