#include <ombrel/logging/LogException.h>

#include <cstdio>
#include <string>

#include <ombrel/config/OmbrelException.h>
#include <ombrel/logging/Trace.h>
#include <ombrel/utility/Dictionary.h>

namespace ombrel::logging {

namespace {

std::string DescribeResult(config::ResultCode inResult)
{
    char text[32];
    std::snprintf(text, sizeof(text), " (0x%08X)", inResult);
    return text;
}

std::string Describe(const std::exception& inException)
{
    const auto* own = dynamic_cast<const config::ombrel_exception*>(&inException);
    std::string text = inException.what();
    if (own != nullptr) {
        text += DescribeResult(own->GetResult());
        for (const auto& [name, value] : own->GetAdditionalData()) {
            text += " " + name + "=" + value.ToString();
        }
    }
    return text;
}

void Write(std::string_view inWhere, const std::string& inText)
{
    Trace(0, kExceptionCategory, "Exception in " + std::string(inWhere) + ": " + inText + "\r\n");
}

} // namespace

void LogException(std::exception_ptr inException, std::string_view inWhere) noexcept
{
    if (inException == nullptr) {
        return;
    }
    try {
        std::rethrow_exception(std::move(inException));
    } catch (const std::exception& exception) {
        LogException(exception, inWhere);
    } catch (...) {
        try {
            Write(inWhere, "Unknown exception");
        } catch (...) {
            // A report that can't be made is not worth a second failure.
        }
    }
}

void LogException(const std::exception& inException, std::string_view inWhere) noexcept
{
    try {
        if (TraceEnabled(0, kExceptionCategory)) {
            Write(inWhere, Describe(inException));
        }
    } catch (...) {
        // A report that can't be made is not worth a second failure.
    }
}

} // namespace ombrel::logging
