#include "Examples.h"

#include <algorithm>
#include <stdexcept>

#include <velmora/ScriptException.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace velmora::test {

namespace {

const definition::ScriptObjectDefinition<TakeObject> kTakeDefinition("Take", "A recording.");
const definition::ScriptObjectDefinition<Fader> kFaderDefinition("Fader", "A gain with a name.");

} // namespace

void TakeObject::DefineObject(definition::ScriptObjectDefinition<TakeObject>& ioDefinition)
{
    ioDefinition.AddNamespace("studio.tape", 0x10000);
    ioDefinition.AddMethod("getLength", "Number of samples.", &TakeObject::GetLength);
    ioDefinition.AddMethod("getPeaks", "Objects with min and max.", &TakeObject::GetPeaks,
                           ParameterType<unsigned>("slots", "How many."));
    ioDefinition.AddConstant("SPEED", "Usual speed.", 38.1);
    ioDefinition.AddConstant("NAME", "Maker's name.", "tape");
}

std::vector<boost::intrusive_ptr<AnonObject>> TakeObject::GetPeaks(unsigned inSlots) const
{
    std::vector<boost::intrusive_ptr<AnonObject>> peaks;
    const auto [low, high] = std::minmax_element(mTake->mSamples.begin(), mTake->mSamples.end());
    for (unsigned slot = 0; slot < inSlots; ++slot) {
        auto peak = utils::CreateScriptObject<AnonObject>();
        peak->SetProperty("min", *low);
        peak->SetProperty("max", *high);
        peaks.push_back(std::move(peak));
    }
    return peaks;
}

void Fader::DefineObject(definition::ScriptObjectDefinition<Fader>& ioDefinition)
{
    ioDefinition.AddNamespace("studio");
    ioDefinition.AddConstructor(
        "Create a new instance.",
        [](const std::string& inName) { return utils::CreateScriptObject<Fader>(inName); },
        ParameterType<std::string>("name"));
    ioDefinition.AddProperty("gain", "Linear gain.", &Fader::GetGain, &Fader::SetGain);
    ioDefinition.AddProperty("name", "Its name.", &Fader::GetName);
    ioDefinition.AddMethod("fade", "Fade in steps.", &Fader::Fade, ParameterType<double>("gain"),
                           ParameterType<std::vector<int>>("frames", "Length of each step."));
    ioDefinition.AddMethod("apply", "Apply the gain.", &Fader::Apply,
                           ParameterType<std::shared_ptr<Take>>("take"));
    ioDefinition.AddMethod("link", "Move with another.", &Fader::Link,
                           ParameterType<boost::intrusive_ptr<Fader>>("other"));
    ioDefinition.AddMethod("getLinked", "The other.", &Fader::GetLinked);
    ioDefinition.AddMethod("isLinked", "Whether there is one.",
                           [](const Fader& inFader) { return inFader.mLinked != nullptr; });
    ioDefinition.AddMethod("break", "Break.", [](Fader&) { throw std::runtime_error("broken"); });
    ioDefinition.AddConstant("STEPS", "Positions.", 128);
}

void Fader::SetGain(double inGain)
{
    if (inGain < 0.0) {
        throw ParameterErrorException("A gain is not negative.");
    }
    mGain = inGain;
}

void Fader::Fade(double inGain, const std::vector<int>& inFrames)
{
    mGain += (inGain - mGain) * static_cast<double>(inFrames.size()) / 2.0;
}

std::shared_ptr<Take> Fader::Apply(const std::shared_ptr<Take>& inTake) const
{
    if (inTake == nullptr) {
        throw ScriptException("no take");
    }
    auto result = std::make_shared<Take>(*inTake);
    for (float& sample : result->mSamples) {
        sample *= static_cast<float>(mGain);
    }
    return result;
}

} // namespace velmora::test
