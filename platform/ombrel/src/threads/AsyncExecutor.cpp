#include <ombrel/threads/AsyncExecutor.h>

#include <ombrel/threads/AsyncThreadedExecutor.h>

namespace ombrel::threads {

AsyncExecutor::~AsyncExecutor() = default;

void CallAsync(const std::shared_ptr<AsyncExecutor>& inExecutor, std::function<void()> inFunction)
{
    if (!inExecutor || !inFunction) {
        throw std::bad_function_call();
    }
    inExecutor->Post(std::move(inFunction));
}

std::shared_ptr<AsyncExecutor> CreateSerialExecutor()
{
    return std::make_shared<AsyncThreadedExecutor>(1, "ombrel-serial");
}

} // namespace ombrel::threads
