#pragma once

#include <ombrel/threads/Task.h>

namespace ombrel::threads {

/// Runs the work and sends what it throws to the log.
void RunTask(Task&& ioWork) noexcept;

} // namespace ombrel::threads
