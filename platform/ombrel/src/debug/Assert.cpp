#include <ombrel/debug/Assert.h>

#include <ombrel/utility/Dictionary.h>

namespace ombrel::debug {

namespace {

constinit thread_local int sDisabledScopes = 0;

} // namespace

config::ombrel_exception MakeCheckException(const char* inMessage, config::ResultCode inResult,
                                            const CheckLocation& inLocation)
{
    config::ombrel_exception exception(inMessage, inResult);
    exception.AddAdditionalData({{kDebugExpression, inLocation.mExpression},
                                 {kDebugSourceFile, inLocation.mFile},
                                 {kDebugSourceLine, inLocation.mLine},
                                 {kDebugSourceFunction, inLocation.mFunction}});
    return exception;
}

void ThrowCheckException(const char* inMessage, config::ResultCode inResult, const CheckLocation& inLocation)
{
    throw MakeCheckException(inMessage, inResult, inLocation);
}

bool AreAssertsEnabled() noexcept
{
    return sDisabledScopes == 0;
}

ScDisableAsserts::ScDisableAsserts() noexcept
{
    ++sDisabledScopes;
}

ScDisableAsserts::~ScDisableAsserts()
{
    --sDisabledScopes;
}

} // namespace ombrel::debug
