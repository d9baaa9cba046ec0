#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include <ombrel/Export.h>

namespace ombrel::utility {

class Dictionary;

} // namespace ombrel::utility

namespace ombrel::config {

/// Number that tells one kind of failure from another. 0 is success; a module's own codes have the top bit
/// set.
using ResultCode = std::uint32_t;

inline constexpr ResultCode kResultSuccess = 0;
/// An exception of a foreign type.
inline constexpr ResultCode kResultUnknownFailure = 0xE1000001;
/// Memory ran out (`std::bad_alloc`).
inline constexpr ResultCode kResultOutOfMemory = 0xE1000002;
/// A check of a program's own state failed.
inline constexpr ResultCode kResultCheckFailed = 0xE1000003;
/// A value was read that is marked invalid.
inline constexpr ResultCode kResultInvalidValue = 0xE1000004;
/// A file or stream could not be opened, read, written or positioned.
inline constexpr ResultCode kResultFileFailure = 0xE1000005;
/// Text in a wrong form was given to a reader.
inline constexpr ResultCode kResultMalformedText = 0xE1000006;

/// The exception of this system's hard faults: a message, a result code, and additional data for the log.
///
/// Copies share their state until one of them is given more data, so copying never throws.
class OMBREL_EXPORT ombrel_exception : public std::exception
{
public:
    /// The message becomes "Result code 0x..." with eight digits.
    explicit ombrel_exception(ResultCode inResult);
    /// `inMessage` is UTF-8.
    explicit ombrel_exception(std::string inMessage, ResultCode inResult = kResultUnknownFailure);
    ombrel_exception(const ombrel_exception&) noexcept;
    ombrel_exception& operator=(const ombrel_exception&) noexcept;
    ~ombrel_exception() override;

    /// The message.
    [[nodiscard]] const char* what() const noexcept override;
    [[nodiscard]] ResultCode GetResult() const noexcept;

    /// Adds to the data; values under names that are there already are replaced. Returns this exception, for
    /// `throw ombrel_exception(...).AddAdditionalData(...)`.
    ombrel_exception& AddAdditionalData(utility::Dictionary&& ioData);
    [[nodiscard]] const utility::Dictionary& GetAdditionalData() const noexcept;

private:
    struct State;

    std::shared_ptr<State> mState;
};

/// The result code of a caught exception: that of an `ombrel_exception`, `kResultOutOfMemory` for
/// `std::bad_alloc`, `kResultSuccess` for a null pointer, `kResultUnknownFailure` for all others. [any
/// thread]
[[nodiscard]] OMBREL_EXPORT ResultCode ExtractResultFromException(std::exception_ptr inException) noexcept;

/// The message of a caught exception, "Unknown exception" for a foreign type, empty for a null pointer. [any
/// thread]
[[nodiscard]] OMBREL_EXPORT std::string ExtractMessageFromException(std::exception_ptr inException);

} // namespace ombrel::config

namespace ombrel {

using config::ombrel_exception;

} // namespace ombrel
