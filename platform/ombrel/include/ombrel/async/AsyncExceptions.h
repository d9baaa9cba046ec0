#pragma once

#include <exception>
#include <string>

#include <ombrel/Export.h>
#include <ombrel/config/OmbrelException.h>

/// What futures carry besides the exceptions of the work itself.
namespace ombrel::async {

/// A generator has come to its end: carried by every future that it gives from then on. The work of a
/// generator throws it to say so. It is the normal end of a stream and no failure.
class OMBREL_EXPORT StopGeneratorException : public std::exception
{
public:
    ~StopGeneratorException() override;
    const char* what() const noexcept override;
};

/// The promise, or the work behind a future, was dropped before it gave a result.
class OMBREL_EXPORT BrokenPromiseException : public config::ombrel_exception
{
public:
    BrokenPromiseException();
    ~BrokenPromiseException() override;
};

/// A fault of the caller: a default-constructed future was used, or a promise was to be kept twice.
class OMBREL_EXPORT InvalidFutureException : public config::ombrel_exception
{
public:
    explicit InvalidFutureException(std::string inMessage);
    ~InvalidFutureException() override;
};

/// The result codes of the two.
inline constexpr config::ResultCode kResultBrokenPromise = 0xE1000101;
inline constexpr config::ResultCode kResultInvalidFuture = 0xE1000102;

} // namespace ombrel::async
