#include <ombrel/async/Submit.h>
#include <ombrel/threads/AsyncThreadedExecutor.h>

namespace ombrel::async {

const std::shared_ptr<threads::AsyncExecutor>& GetDefaultExecutor()
{
    static const std::shared_ptr<threads::AsyncExecutor> sExecutor =
        std::make_shared<threads::AsyncThreadedExecutor>(0, "ombrel-default");
    return sExecutor;
}

} // namespace ombrel::async
