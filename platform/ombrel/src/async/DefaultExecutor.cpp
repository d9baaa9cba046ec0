#include <ombrel/async/Submit.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>

namespace ombrel::async {

namespace {

/// Finishes the work at the end of the program. The executor itself is never destroyed: its own work and the
/// destructors of other statics may still post to it.
struct CloseAtExit
{
    ~CloseAtExit() { mExecutor.Close(); }
    threads::AsyncThreadedExecutor& mExecutor;
};

} // namespace

const std::shared_ptr<threads::AsyncExecutor>& GetDefaultExecutor()
{
    static auto& sPool = *new threads::AsyncThreadedExecutor(0, "ombrel-default");
    static auto& sExecutor = *new std::shared_ptr<threads::AsyncExecutor>(&sPool);
    static const CloseAtExit sCloseAtExit{sPool};
    return sExecutor;
}

} // namespace ombrel::async
