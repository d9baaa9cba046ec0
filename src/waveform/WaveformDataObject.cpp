#include <tessaro/waveform/WaveformDataObject.h>

#include <cstdint>
#include <utility>

#include <velmora/definition/ScriptObjectDefinition.h>
#include <velmora/utils/CreateScriptObject.h>

namespace tessaro::waveform {

namespace {

constexpr const char* kTypeNone = "none";
constexpr const char* kTypeSamples = "samples";
constexpr const char* kTypePeaks = "peaks";

velmora::AnonObject::Properties DescribeSlot(const WaveformData& inData, std::size_t inChannel,
                                             std::size_t inSlot)
{
    if (inData.GetType() == WaveformDataType::kPeaks) {
        const WaveformPeakValue peak = inData.GetWaveformPeakValue(inChannel, inSlot);
        return {{"min", peak.mMin}, {"max", peak.mMax}};
    }
    return {{"sample", inData.GetWaveformSample(inChannel, inSlot)}};
}

const velmora::definition::ScriptObjectDefinition<WaveformDataObject>
    kDefinition("WaveformData", "This object can hold waveform data for multiple channels.");

} // namespace

WaveformDataObject::WaveformDataObject() = default;
WaveformDataObject::~WaveformDataObject() = default;

void WaveformDataObject::DefineObject(
    velmora::definition::ScriptObjectDefinition<WaveformDataObject>& ioDefinition)
{
    ioDefinition.AddNamespace("tessaro");
    ioDefinition.AddMethod("getChannelCount", "Get the channel count of this WaveformData.",
                           &WaveformDataObject::GetChannelCount);
    ioDefinition.AddMethod(
        "getChannel",
        "Returns the data for the requested channel of this WaveformData. The peak data is structured as a "
        "vector of objects having min and max values if getType is TYPE_PEAKS, otherwise one value per "
        "sample.",
        &WaveformDataObject::GetChannel, velmora::ParameterType<unsigned>("index"));
    ioDefinition.AddMethod("getType",
                           "Returns the Type of this WaveformData, i.e., if the buffer contains samples or "
                           "min/max peak pairs.",
                           &WaveformDataObject::GetType);
    ioDefinition.AddConstant("TYPE_NONE", "The associate WaveformDataObject is not initialized.", kTypeNone);
    ioDefinition.AddConstant("TYPE_SAMPLES", "The associate WaveformDataObject contains sample values.",
                             kTypeSamples);
    ioDefinition.AddConstant("TYPE_PEAKS", "The associate WaveformDataObject contains peak values.",
                             kTypePeaks);
}

void WaveformDataObject::Initialize(const std::shared_ptr<WaveformData>& inData)
{
    mData = inData;
}

bool WaveformDataObject::CastTo(std::shared_ptr<WaveformData>& outData) const
{
    outData = mData;
    return true;
}

unsigned WaveformDataObject::GetChannelCount() const
{
    return mData != nullptr ? static_cast<unsigned>(mData->GetChannelCount()) : 0;
}

/// A channel that does not exist has zeros in its slots, as the getters of the data give them.
std::vector<boost::intrusive_ptr<velmora::AnonObject>> WaveformDataObject::GetChannel(unsigned inIndex) const
{
    std::vector<boost::intrusive_ptr<velmora::AnonObject>> slots;
    if (mData == nullptr) {
        return slots;
    }
    const std::size_t count = mData->GetDataSlots();
    slots.reserve(count);
    for (std::size_t slot = 0; slot < count; ++slot) {
        slots.push_back(
            velmora::utils::CreateScriptObject<velmora::AnonObject>(DescribeSlot(*mData, inIndex, slot)));
    }
    return slots;
}

/// Data of no type counts as samples: scripts are never given TYPE_NONE, and rely on getting one of the two.
std::string WaveformDataObject::GetType() const
{
    return mData != nullptr && mData->GetType() == WaveformDataType::kPeaks ? kTypePeaks : kTypeSamples;
}

} // namespace tessaro::waveform
