#include <velmora/ScriptException.h>

#include <utility>

#include <ombrel/utility/Dictionary.h>

namespace velmora {

namespace {

constexpr const char* kItem = "item";
constexpr const char* kParameter = "parameter";
constexpr const char* kExpected = "expected";
constexpr const char* kGot = "got";

std::string ComposeMessage(std::string_view inItem, std::string_view inParameter, std::string_view inExpected,
                           std::string_view inGot)
{
    std::string message(inItem);
    if (!inParameter.empty()) {
        message.append(": parameter \"").append(inParameter).append("\"");
    }
    return message.append(": expected ").append(inExpected).append(", got ").append(inGot);
}

} // namespace

ScriptException::ScriptException(std::string inMessage, ombrel::config::ResultCode inResult)
    : ombrel_exception(std::move(inMessage), inResult)
{
}

ScriptException::ScriptException(const ScriptException&) noexcept = default;
ScriptException& ScriptException::operator=(const ScriptException&) noexcept = default;
ScriptException::~ScriptException() = default;

ParameterErrorException::ParameterErrorException(std::string inMessage)
    : ScriptException(std::move(inMessage), kResultScriptParameterError)
{
}

ParameterErrorException::ParameterErrorException(std::string_view inItem, std::string_view inParameter,
                                                 std::string_view inExpected, std::string_view inGot)
    : ParameterErrorException(ComposeMessage(inItem, inParameter, inExpected, inGot))
{
    AddAdditionalData({{kItem, inItem}, {kParameter, inParameter}, {kExpected, inExpected}, {kGot, inGot}});
}

ParameterErrorException::ParameterErrorException(const ParameterErrorException&) noexcept = default;
ParameterErrorException&
ParameterErrorException::operator=(const ParameterErrorException&) noexcept = default;
ParameterErrorException::~ParameterErrorException() = default;

const std::string& ParameterErrorException::GetItem() const noexcept
{
    return GetAdditionalData().Get(kItem).GetString();
}

const std::string& ParameterErrorException::GetParameter() const noexcept
{
    return GetAdditionalData().Get(kParameter).GetString();
}

const std::string& ParameterErrorException::GetExpected() const noexcept
{
    return GetAdditionalData().Get(kExpected).GetString();
}

const std::string& ParameterErrorException::GetGot() const noexcept
{
    return GetAdditionalData().Get(kGot).GetString();
}

} // namespace velmora
