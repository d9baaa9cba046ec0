#include "threads/RunTask.h"

#include <exception>

#include <ombrel/logging/LogException.h>

namespace ombrel::threads {

void RunTask(Task&& ioWork) noexcept
{
    try {
        ioWork();
    } catch (...) {
        logging::LogException(std::current_exception(), "work on an executor");
    }
}

} // namespace ombrel::threads
