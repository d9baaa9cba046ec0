#include <tessaro/waveform/WaveformDataObject.h>

#include <array>
#include <map>

#include <gtest/gtest.h>

#include <velmora/ScriptException.h>
#include <velmora/definition/Registry.h>
#include <velmora/definition/ScriptObjectDefinition.h>

namespace tessaro::waveform {

namespace {

using velmora::ScriptArray;
using velmora::ScriptObjectPtr;
using velmora::ScriptValue;

ScriptObjectPtr Wrap(const std::shared_ptr<WaveformData>& inData)
{
    return velmora::utility::TransformObjectIntoScriptingObject(inData);
}

ScriptArray GetChannel(const ScriptObjectPtr& inObject, ScriptValue inIndex)
{
    return inObject->CallMethod("getChannel", std::array{std::move(inIndex)}).GetArray();
}

/// Name and value of each property, in their order.
velmora::AnonObject::Properties Slot(const ScriptArray& inChannel, std::size_t inSlot)
{
    return dynamic_cast<const velmora::AnonObject&>(*inChannel.at(inSlot).GetObject()).GetProperties();
}

TEST(WaveformDataObjectTest, ScriptsFindTheClassWithItsItems)
{
    const auto* const definition = velmora::definition::FindDefinition("tessaro.WaveformData");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(definition->GetDescription(), "This object can hold waveform data for multiple channels.");
    EXPECT_EQ(definition->GetConstructor(), nullptr);
    EXPECT_TRUE(definition->GetProperties().empty());
    std::map<std::string, std::string> results;
    for (const auto& method : definition->GetMethods()) {
        results[method.GetName()] = method.GetType().GetName();
    }
    EXPECT_EQ(results,
              (std::map<std::string, std::string>{{"getChannelCount", "integer from 0 to 4294967295"},
                                                  {"getChannel", "array of object"},
                                                  {"getType", "string"}}));
    ASSERT_EQ(definition->FindMethod("getChannel")->GetParameters().size(), 1u);
    EXPECT_EQ(definition->FindMethod("getChannel")->GetParameters()[0].mName, "index");
    std::map<std::string, std::string> constants;
    for (const auto& constant : definition->GetConstants()) {
        constants[constant.GetName()] = constant.GetValue().GetString();
    }
    EXPECT_EQ(constants, (std::map<std::string, std::string>{
                             {"TYPE_NONE", "none"}, {"TYPE_SAMPLES", "samples"}, {"TYPE_PEAKS", "peaks"}}));
}

TEST(WaveformDataObjectTest, ChannelsArriveAsPeaksOrSamples)
{
    const auto peaks = Wrap(std::make_shared<WaveformData>(WaveformData::Buffer{1, -1, 2, -2, 3, -3, 4, -4},
                                                           WaveformDataType::kPeaks, 2));
    EXPECT_EQ(peaks->CallMethod("getChannelCount", {}).GetInteger(), 2);
    EXPECT_EQ(peaks->CallMethod("getType", {}).GetString(), "peaks");
    const auto channel = GetChannel(peaks, 1.0);
    ASSERT_EQ(channel.size(), 2u);
    EXPECT_EQ(Slot(channel, 1), (velmora::AnonObject::Properties{{"min", -4.0f}, {"max", 4.0f}}));

    const auto samples =
        Wrap(std::make_shared<WaveformData>(WaveformData::Buffer{1, 2, 3}, WaveformDataType::kSamples, 1));
    EXPECT_EQ(samples->CallMethod("getType", {}).GetString(), "samples");
    EXPECT_EQ(Slot(GetChannel(samples, 0), 2), (velmora::AnonObject::Properties{{"sample", 3.0f}}));
    ASSERT_EQ(GetChannel(samples, 7).size(), 3u); // no such channel: zeros
    EXPECT_EQ(Slot(GetChannel(samples, 7), 2), (velmora::AnonObject::Properties{{"sample", 0.0f}}));
    for (const ScriptValue& index : {ScriptValue(-1), ScriptValue(0.5), ScriptValue("0"), ScriptValue()}) {
        EXPECT_THROW(GetChannel(samples, index), velmora::ParameterErrorException);
    }
}

TEST(WaveformDataObjectTest, NoDataIsNoSlotsAndCountsAsSamples)
{
    for (const auto& data : {std::shared_ptr<WaveformData>(), std::make_shared<WaveformData>()}) {
        const auto object = Wrap(data);
        EXPECT_EQ(object->CallMethod("getChannelCount", {}).GetInteger(), 0);
        EXPECT_EQ(object->CallMethod("getType", {}).GetString(), "samples");
        EXPECT_TRUE(GetChannel(object, 0).empty());
        auto back = std::make_shared<WaveformData>();
        EXPECT_TRUE(velmora::utility::TransformScriptingObjectIntoObject(*object, back));
        EXPECT_EQ(back, data);
    }
}

} // namespace

} // namespace tessaro::waveform
