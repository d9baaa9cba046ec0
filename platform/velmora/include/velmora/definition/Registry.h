#pragma once

#include <string_view>
#include <typeindex>
#include <vector>

#include <velmora/Export.h>

/// All script classes of the libraries that are loaded.
///
/// A definition enters when its library is loaded and leaves when it is unloaded; the registry is there
/// before the first and after the last static object, and may be used from several threads at once. What it
/// hands out lives as long as the library that defined it: a host that unloads a library lets go of that
/// library's definitions and objects first, and asks again after loading or unloading one.
///
/// Of several definitions with one full name, or of one C++ class, the earliest that still stands is found
/// and listed.
namespace velmora::definition {

class ScriptObjectDefinitionBase;

/// All definitions in the order of their full names. [control]
[[nodiscard]] VELMORA_EXPORT std::vector<const ScriptObjectDefinitionBase*> GetDefinitions();

/// By full name, "tessaro.WaveformData"; null if there is none. [control]
[[nodiscard]] VELMORA_EXPORT const ScriptObjectDefinitionBase* FindDefinition(std::string_view inFullName);

/// By C++ class; null if the class has none. Base classes are not looked at. [control]
[[nodiscard]] VELMORA_EXPORT const ScriptObjectDefinitionBase* FindDefinition(std::type_index inClass);

} // namespace velmora::definition
