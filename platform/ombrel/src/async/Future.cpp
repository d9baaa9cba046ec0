#include <ombrel/async/Future.h>

namespace ombrel::async {

namespace details {

void ThrowPromiseKeptTwice()
{
    throw InvalidFutureException("A promise was to be kept twice");
}

std::exception_ptr MakeBrokenPromiseError() noexcept
{
    try {
        throw BrokenPromiseException();
    } catch (...) {
        return std::current_exception();
    }
}

} // namespace details

void UntypedFuture::ThrowInvalid()
{
    throw InvalidFutureException("A future without a result was used");
}

bool WaitForUntypedUntil(const UntypedFuture& inFuture, std::chrono::steady_clock::time_point inTime)
{
    return inFuture.WaitUntil(inTime);
}

} // namespace ombrel::async
