#include "threads/RunTask.h"

#include <cstdio>
#include <exception>

namespace ombrel::threads {

void RunTask(Task inWork) noexcept
{
    try {
        inWork();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ombrel: work on an executor failed: %s\n", error.what());
    } catch (...) {
        std::fputs("ombrel: work on an executor failed\n", stderr);
    }
}

} // namespace ombrel::threads
