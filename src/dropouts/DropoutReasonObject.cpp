#include <tessaro/dropouts/DropoutReasonObject.h>

#include <velmora/definition/ScriptObjectDefinition.h>

#include "DropoutReasonTable.h"

namespace tessaro::dropouts {

namespace {

/// Carried to the engine's binding beside the namespace's name.
constexpr std::uint32_t kNamespaceValue = 0x10000;

const velmora::definition::ScriptObjectDefinition<DropoutReasonObject>
    kDefinition("DropoutReason",
                "DropoutReason provides access to constants referring to the different types "
                "of dropouts.");

} // namespace

DropoutReasonObject::DropoutReasonObject() = default;
DropoutReasonObject::~DropoutReasonObject() = default;

void DropoutReasonObject::DefineObject(
    velmora::definition::ScriptObjectDefinition<DropoutReasonObject>& ioDefinition)
{
    ioDefinition.AddNamespace("tessaro", kNamespaceValue);
    for (int i = 0; i < kDropoutReasonCount; ++i) {
        const DropoutReasonTexts& texts = GetTexts(static_cast<DropoutReason>(i));
        ioDefinition.AddConstant(texts.mConstant, texts.mScriptDescription, i);
    }
}

} // namespace tessaro::dropouts
