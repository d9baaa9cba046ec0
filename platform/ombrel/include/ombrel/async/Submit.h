#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include <ombrel/Export.h>
#include <ombrel/async/Promise.h>

namespace ombrel::async {

/// The executor for work that asks for none in particular: a process-wide `AsyncThreadedExecutor` with a
/// thread for each processor, made at first use. At the end of the process it lets posted work finish. Work
/// that blocks for long is better off with an executor of its own.
OMBREL_EXPORT const std::shared_ptr<threads::AsyncExecutor>& GetDefaultExecutor();

/// Runs `inFunction` on `inExecutor` and gives the future of what it returns or throws. The function may
/// return a future itself, whose outcome it then is. Throws `std::bad_function_call` if the executor is null,
/// and what the executor throws when it does not take the work.
template <std::invocable<> Function>
auto Submit(const std::shared_ptr<threads::AsyncExecutor>& inExecutor, Function&& inFunction)
{
    using Held = std::remove_cvref_t<Function>;
    if (!inExecutor) {
        throw std::bad_function_call();
    }
    Promise<details::FutureValueOf<std::invoke_result_t<Held&>>> promise;
    auto future = promise.GetFuture();
    inExecutor->Post(
        [promise = std::move(promise), function = Held(std::forward<Function>(inFunction))]() mutable {
            details::KeepWith(promise, function);
        });
    return future;
}

} // namespace ombrel::async
