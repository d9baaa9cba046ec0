#include <ombrel/async/AsyncExceptions.h>

#include <utility>

namespace ombrel::async {

StopGeneratorException::~StopGeneratorException() = default;

const char* StopGeneratorException::what() const noexcept
{
    return "The generator has come to its end";
}

BrokenPromiseException::BrokenPromiseException()
    : ombrel_exception("The work behind a future was dropped before it gave a result", kResultBrokenPromise)
{
}

BrokenPromiseException::~BrokenPromiseException() = default;

InvalidFutureException::InvalidFutureException(std::string inMessage)
    : ombrel_exception(std::move(inMessage), kResultInvalidFuture)
{
}

InvalidFutureException::~InvalidFutureException() = default;

} // namespace ombrel::async
