#pragma once

#include <duktape.h>

#include <velmora/ScriptObject.h>
#include <velmora/ScriptValue.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace host {

/// Values on their way between the script engine's stack and the program.
///
/// The engine leaves a function by a jump that runs no destructors. So these have no local objects with
/// destructors, and are called under duk_safe_call with values that belong to the caller.

/// Reads what stands at `inIndex`. A plain object becomes a `velmora::AnonObject` of its own enumerable
/// properties, undefined and null become nothing. Raises a script error for functions and symbols, and for
/// values that are nested too deep or have too many elements.
void ReadValue(duk_context* ioHeap, duk_idx_t inIndex, velmora::ScriptValue& outValue);

/// Pushes a value. An object of a class is wrapped and kept until the script forgets it; a record becomes a
/// plain object.
void PushValue(duk_context* ioHeap, const velmora::ScriptValue& inValue);

/// What the script's object at `inIndex` wraps; null for anything else.
velmora::ScriptObjectBase* GetWrapped(duk_context* ioHeap, duk_idx_t inIndex);

/// Pops an object from the stack and makes it the prototype of all wrapped objects of a class.
void StorePrototype(duk_context* ioHeap, const velmora::definition::ScriptObjectDefinitionBase& inDefinition);

} // namespace host
