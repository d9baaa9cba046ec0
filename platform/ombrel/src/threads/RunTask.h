#pragma once

#include <ombrel/threads/Task.h>

namespace ombrel::threads {

/// Runs the work, sends what it throws to the log, and destroys the work before it returns.
void RunTask(Task inWork) noexcept;

} // namespace ombrel::threads
