#pragma once

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <velmora/ScriptException.h>
#include <velmora/ScriptObject.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora::test {

/// A script engine in miniature. Like a real one it knows no class: it walks the definitions and makes
/// functions under names. Its only numbers are of double precision, and its exceptions are texts.
class FakeEngine
{
public:
    using Arguments = std::vector<ScriptValue>;
    using Function = std::function<ScriptValue(const ScriptObjectPtr&, const Arguments&)>;

    FakeEngine()
    {
        for (const auto* const definition : definition::GetDefinitions()) {
            Bind(*definition);
        }
    }

    /// Calls what stands under the name: "studio.Fader.new", "studio.Fader.fade", "studio.Fader.gain=".
    ScriptValue Run(const std::string& inName, const ScriptValue& inThis, Arguments inArguments = {})
    {
        for (ScriptValue& argument : inArguments) {
            if (argument.GetKind() == ScriptValueKind::kInteger) {
                argument = argument.GetNumber();
            }
        }
        try {
            return mFunctions.at(inName)(inThis.GetObject(), inArguments);
        } catch (const ParameterErrorException& exception) {
            return std::string("TypeError: ") + exception.what();
        } catch (const std::exception& exception) {
            return std::string("Error: ") + exception.what();
        }
    }

    /// One line for each thing that a script can reach.
    std::string GetListing() const { return mListing.str(); }

private:
    void Bind(const definition::ScriptObjectDefinitionBase& inDefinition)
    {
        const std::string prefix = inDefinition.GetFullName() + ".";
        mListing << inDefinition.GetFullName() << ": " << inDefinition.GetDescription() << "\n";
        if (const auto* const constructor = inDefinition.GetConstructor()) {
            List(*constructor, constructor->GetParameters());
            mFunctions[prefix + "new"] = [constructor](const ScriptObjectPtr&, const Arguments& inArguments) {
                return constructor->Construct(inArguments);
            };
        }
        for (const auto& method : inDefinition.GetMethods()) {
            List(method, method.GetParameters());
            mFunctions[prefix + method.GetName()] = [&method](const ScriptObjectPtr& inThis,
                                                              const Arguments& inArguments) {
                return method.Call(*inThis, inArguments);
            };
        }
        for (const auto& property : inDefinition.GetProperties()) {
            List(property, {});
            mFunctions[prefix + property.GetName()] = [&property](const ScriptObjectPtr& inThis,
                                                                  const Arguments&) {
                return property.Get(*inThis);
            };
            mFunctions[prefix + property.GetName() + "="] = [&property](const ScriptObjectPtr& inThis,
                                                                        const Arguments& inArguments) {
                property.Set(*inThis, inArguments.at(0));
                return ScriptValue();
            };
        }
        for (const auto& constant : inDefinition.GetConstants()) {
            List(constant, {});
            mFunctions[prefix + constant.GetName()] = [&constant](const ScriptObjectPtr&, const Arguments&) {
                return constant.GetValue();
            };
        }
    }

    void List(const definition::ScriptItemDefinitionBase& inItem, std::span<const ParameterInfo> inParameters)
    {
        mListing << "  " << inItem.GetName() << "(";
        for (const ParameterInfo& parameter : inParameters) {
            mListing << (&parameter == inParameters.data() ? "" : ", ") << parameter.mName << ": "
                     << parameter.mType->GetName();
        }
        mListing << ") -> " << inItem.GetType().GetName() << ": " << inItem.GetDescription() << "\n";
    }

    std::map<std::string, Function> mFunctions;
    std::ostringstream mListing;
};

} // namespace velmora::test
