#pragma once

#include <ombrel/Export.h>
#include <ombrel/config/OmbrelException.h>

/// Checks of a program's own state that end in an exception, never in an abort.
namespace ombrel::debug {

/// Names of the additional data that the exception of a failed check carries: the expression, the source file
/// and the function as text, the line as integer.
inline constexpr const char* kDebugExpression = "DebugExpression";
inline constexpr const char* kDebugSourceFile = "DebugSourceFile";
inline constexpr const char* kDebugSourceFunction = "DebugSourceFunction";
inline constexpr const char* kDebugSourceLine = "DebugSourceLine";

/// Where a check stands. Only the pointers are kept: pass literals.
struct CheckLocation
{
    const char* mExpression;
    const char* mFile;
    int mLine;
    const char* mFunction;
};

/// The exception of a failed check, with its location as additional data.
[[nodiscard]] OMBREL_EXPORT config::ombrel_exception
MakeCheckException(const char* inMessage, config::ResultCode inResult, const CheckLocation& inLocation);
[[noreturn]] OMBREL_EXPORT void ThrowCheckException(const char* inMessage, config::ResultCode inResult,
                                                    const CheckLocation& inLocation);

/// False while the calling thread is in the scope of an `ScDisableAsserts`. [any thread]
[[nodiscard]] OMBREL_EXPORT bool AreAssertsEnabled() noexcept;

/// Scope guard: the asserts of this thread pass unseen while it lives. Guards nest.
class OMBREL_EXPORT ScDisableAsserts
{
public:
    ScDisableAsserts() noexcept;
    ~ScDisableAsserts();
    ScDisableAsserts(const ScDisableAsserts&) = delete;
    ScDisableAsserts& operator=(const ScDisableAsserts&) = delete;
};

} // namespace ombrel::debug

#if defined(__FILE_NAME__)
#define OMBREL_DEBUG_FILE __FILE_NAME__
#else
#define OMBREL_DEBUG_FILE __FILE__
#endif

#define OMBREL_DEBUG_LOCATION(EXPRESSION)                                                                    \
    ::ombrel::debug::CheckLocation                                                                           \
    {                                                                                                        \
        EXPRESSION, OMBREL_DEBUG_FILE, __LINE__, __func__                                                    \
    }

/// Throws an `ombrel_exception` with this message and result code when the expression is false. Part of what
/// the code does: it stands in every build and no guard switches it off.
#define OMBREL_CHECK(EXPRESSION, MESSAGE, RESULT)                                                            \
    do {                                                                                                     \
        if (!(EXPRESSION)) [[unlikely]] {                                                                    \
            ::ombrel::debug::ThrowCheckException(MESSAGE, RESULT, OMBREL_DEBUG_LOCATION(#EXPRESSION));       \
        }                                                                                                    \
    } while (false)

/// Throws an `ombrel_exception` with `kResultCheckFailed` when the expression is false, which would be a
/// programming fault; `ScDisableAsserts` lets it pass.
#define OMBREL_ASSERT(EXPRESSION)                                                                            \
    do {                                                                                                     \
        if (!(EXPRESSION) && ::ombrel::debug::AreAssertsEnabled()) [[unlikely]] {                            \
            ::ombrel::debug::ThrowCheckException("Assertion failed: " #EXPRESSION,                           \
                                                 ::ombrel::config::kResultCheckFailed,                       \
                                                 OMBREL_DEBUG_LOCATION(#EXPRESSION));                        \
        }                                                                                                    \
    } while (false)
