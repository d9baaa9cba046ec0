#pragma once

#include <string>
#include <string_view>

#include <ombrel/config/OmbrelException.h>
#include <velmora/Export.h>

namespace velmora {

/// The call from a script failed: no such class or item, a read-only property, an object of another class.
inline constexpr ombrel::config::ResultCode kResultScriptFailure = 0xE2000001;
/// An argument was refused.
inline constexpr ombrel::config::ResultCode kResultScriptParameterError = 0xE2000002;

/// A fault that a script made, with a message for whoever wrote the script. A method of a script object
/// throws it to say what was wrong; calls by name throw it when they can't reach what is named:
///
///     There is no script class "studio.Nobody"
///     studio.Fader has no method "fdae"
///     studio.Fader.name is read-only
///     studio.Fader.fade: called on studio.tape.Take
///
/// An engine turns the two types here into its own error types and the rest of `std::exception`, which comes
/// from the called code unchanged, into its general error.
class VELMORA_EXPORT ScriptException : public ombrel::config::ombrel_exception
{
public:
    /// `inMessage` is UTF-8 and becomes `what()` as it is.
    explicit ScriptException(std::string inMessage,
                             ombrel::config::ResultCode inResult = kResultScriptFailure);
    ScriptException(const ScriptException&) noexcept;
    ScriptException& operator=(const ScriptException&) noexcept;
    ~ScriptException() override;
};

/// An argument that the callee doesn't take: a wrong number of them, a wrong type, a value out of range.
///
///     studio.Fader.fade: expected 2 arguments (gain, frames), got 1
///     studio.Fader.fade: parameter "gain": expected number, got string "loud"
///     studio.Fader.fade: parameter "frames[1]": expected integer, got number 2.5
///
/// In the assignment of a property the parameter is named "value".
///
/// When thrown by the check of declared types, it knows the pieces of its message; they are additional data
/// of the exception under the names "item", "parameter", "expected" and "got".
class VELMORA_EXPORT ParameterErrorException : public ScriptException
{
public:
    /// For a method that refuses a value by its own rules. The pieces are empty.
    explicit ParameterErrorException(std::string inMessage);
    /// The message is `item: parameter "name": expected this, got that`, without the middle piece if the
    /// parameter has no name.
    ParameterErrorException(std::string_view inItem, std::string_view inParameter,
                            std::string_view inExpected, std::string_view inGot);
    ParameterErrorException(const ParameterErrorException&) noexcept;
    ParameterErrorException& operator=(const ParameterErrorException&) noexcept;
    ~ParameterErrorException() override;

    /// Full name of the item that was called: "tessaro.DropoutReporter.getDropoutCount".
    [[nodiscard]] const std::string& GetItem() const noexcept;
    /// Name of the declared parameter; empty if the number of arguments was wrong.
    [[nodiscard]] const std::string& GetParameter() const noexcept;
    [[nodiscard]] const std::string& GetExpected() const noexcept;
    [[nodiscard]] const std::string& GetGot() const noexcept;
};

} // namespace velmora
