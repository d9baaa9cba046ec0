#include <ombrel/config/OmbrelException.h>

#include <cstdio>
#include <new>
#include <utility>

#include <ombrel/utility/CheckedValue.h>
#include <ombrel/utility/Dictionary.h>

namespace ombrel::config {

struct ombrel_exception::State
{
    std::string mMessage;
    ResultCode mResult;
    utility::Dictionary mAdditionalData;
};

namespace {

std::string ResultText(ResultCode inResult)
{
    char text[32];
    std::snprintf(text, sizeof(text), "Result code 0x%08X", inResult);
    return text;
}

} // namespace

ombrel_exception::ombrel_exception(ResultCode inResult) : ombrel_exception(ResultText(inResult), inResult) {}

ombrel_exception::ombrel_exception(std::string inMessage, ResultCode inResult)
    : mState(std::make_shared<State>(State{std::move(inMessage), inResult, {}}))
{
}

ombrel_exception::ombrel_exception(const ombrel_exception&) noexcept = default;
ombrel_exception& ombrel_exception::operator=(const ombrel_exception&) noexcept = default;
ombrel_exception::~ombrel_exception() = default;

const char* ombrel_exception::what() const noexcept
{
    return mState->mMessage.c_str();
}

ResultCode ombrel_exception::GetResult() const noexcept
{
    return mState->mResult;
}

ombrel_exception& ombrel_exception::AddAdditionalData(utility::Dictionary&& ioData)
{
    // Always a state of its own: a count of 1 would not tell that a reader on another thread is done with it.
    auto state = std::make_shared<State>(*mState);
    state->mAdditionalData.Merge(std::move(ioData));
    mState = std::move(state);
    return *this;
}

const utility::Dictionary& ombrel_exception::GetAdditionalData() const noexcept
{
    return mState->mAdditionalData;
}

ResultCode ExtractResultFromException(std::exception_ptr inException) noexcept
{
    if (inException == nullptr) {
        return kResultSuccess;
    }
    try {
        std::rethrow_exception(std::move(inException));
    } catch (const ombrel_exception& exception) {
        return exception.GetResult();
    } catch (const std::bad_alloc&) {
        return kResultOutOfMemory;
    } catch (...) {
        return kResultUnknownFailure;
    }
}

std::string ExtractMessageFromException(std::exception_ptr inException)
{
    if (inException == nullptr) {
        return {};
    }
    try {
        std::rethrow_exception(std::move(inException));
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "Unknown exception";
    }
}

} // namespace ombrel::config

namespace ombrel::utility::details {

void ThrowInvalidValue()
{
    throw config::ombrel_exception("A value was read that is marked invalid", config::kResultInvalidValue);
}

} // namespace ombrel::utility::details
