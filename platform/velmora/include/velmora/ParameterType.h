#pragma once

#include <string>
#include <utility>

#include <velmora/PropertyType.h>
#include <velmora/ScriptTransferTypeInfo.h>
#include <velmora/ScriptValue.h>

namespace velmora {

/// A declared parameter as an engine or a documentation tool sees it.
struct ParameterInfo
{
    std::string mName;
    std::string mDescription; ///< May be empty.
    const ScriptTransferTypeInfo* mType;
};

/// Declares a parameter of a method or constructor, with the C++ type that the function takes:
///
///     ioDefinition.AddMethod("getChannel", "Returns the data of a channel.",
///     &WaveformDataObject::GetChannel,
///                            ParameterType<unsigned>("index", "Counted from 0."));
///
/// Which types there are and what they take is told at `PropertyType` and `ScriptTransferTypeInfo`. Every
/// declared parameter must be given in a call.
template <typename T>
class ParameterType
{
public:
    explicit ParameterType(std::string inName, std::string inDescription = {})
        : mInfo{std::move(inName), std::move(inDescription), &PropertyType<T>::GetInfo()}
    {
    }

    [[nodiscard]] const ParameterInfo& GetInfo() const noexcept { return mInfo; }

    /// The argument for the function, from a value that the type takes.
    [[nodiscard]] static T FromScript(const ScriptValue& inValue)
    {
        return PropertyType<T>::FromScript(inValue);
    }

private:
    ParameterInfo mInfo;
};

} // namespace velmora
