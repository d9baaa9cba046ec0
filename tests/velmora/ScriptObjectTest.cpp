#include <velmora/ScriptObject.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Examples.h"
#include "FakeEngine.h"

namespace velmora::test {
namespace {

using Arguments = FakeEngine::Arguments;

TEST(ScriptObjectTest, EngineListsEverythingThatClassesDefine)
{
    EXPECT_EQ(FakeEngine().GetListing(), R"(studio.Fader: A gain with a name.
  constructor(name: string) -> studio.Fader object: Create a new instance.
  fade(gain: number, frames: array of integer) -> nothing: Fade in steps.
  apply(take: studio.tape.Take object) -> studio.tape.Take object: Apply the gain.
  link(other: studio.Fader object) -> nothing: Move with another.
  getLinked() -> studio.Fader object: The other.
  isLinked() -> bool: Whether there is one.
  break() -> nothing: Break.
  gain() -> number: Linear gain.
  name() -> string: Its name.
  STEPS() -> integer: Positions.
studio.tape.Take: A recording.
  getLength() -> integer from 0 to 4294967295: Number of samples.
  getPeaks(slots: integer from 0 to 4294967295) -> array of object: Objects with min and max.
  SPEED() -> number: Usual speed.
  NAME() -> string: Maker's name.
)");
}

TEST(ScriptObjectTest, EngineCallsByNameAndOwnsItsObjects)
{
    {
        FakeEngine engine;
        const ScriptValue fader = engine.Run("studio.Fader.new", {}, {"left"});
        EXPECT_EQ(Fader::gAlive, 1);
        EXPECT_EQ(engine.Run("studio.Fader.name", fader), "left");
        EXPECT_EQ(engine.Run("studio.Fader.STEPS", {}), 128);
        EXPECT_EQ(engine.Run("studio.tape.Take.NAME", {}), "tape");

        EXPECT_EQ(engine.Run("studio.Fader.gain=", fader, {3}), ScriptValue());
        EXPECT_EQ(engine.Run("studio.Fader.fade", fader, {5.0, ScriptArray{48.0, 96.0}}), ScriptValue());
        EXPECT_EQ(engine.Run("studio.Fader.gain", fader), 5.0);

        EXPECT_EQ(engine.Run("studio.Fader.getLinked", fader), ScriptValue());
        const ScriptValue other = engine.Run("studio.Fader.new", {}, {"right"});
        EXPECT_EQ(engine.Run("studio.Fader.link", other, {fader}), ScriptValue());
        EXPECT_EQ(engine.Run("studio.Fader.getLinked", other), fader);
        EXPECT_EQ(engine.Run("studio.Fader.isLinked", other), true);
    }
    EXPECT_EQ(Fader::gAlive, 0);
}

TEST(ScriptObjectTest, ProgramObjectsCrossAsTheirScriptClass)
{
    FakeEngine engine;
    const ScriptValue fader = engine.Run("studio.Fader.new", {}, {"gain"});
    engine.Run("studio.Fader.gain=", fader, {2});
    const auto take = std::make_shared<Take>(Take{{0.5F, -1.0F, 0.25F}});
    const ScriptValue wrapped = utility::TransformObjectIntoScriptingObject(take);
    const ScriptValue louder = engine.Run("studio.Fader.apply", fader, {wrapped});

    std::shared_ptr<Take> back;
    ASSERT_TRUE(utility::TransformScriptingObjectIntoObject(*louder.GetObject(), back));
    EXPECT_EQ(back->mSamples, (std::vector<float>{1.0F, -2.0F, 0.5F}));
    EXPECT_EQ(louder.GetObject()->GetDefinition()->GetNamespaceValue(), 0x10000u);
    EXPECT_FALSE(utility::TransformScriptingObjectIntoObject(*fader.GetObject(), back));
    EXPECT_EQ(engine.Run("studio.tape.Take.getLength", louder), 3);

    const ScriptValue peaks = engine.Run("studio.tape.Take.getPeaks", louder, {2});
    ASSERT_EQ(peaks.GetArray().size(), 2u);
    const ScriptObjectPtr peak = peaks.GetArray()[1].GetObject();
    EXPECT_EQ(peak->GetDefinition(), nullptr);
    EXPECT_EQ(peak->GetPropertyNames(), (std::vector<std::string>{"min", "max"}));
    EXPECT_EQ(peak->GetProperty("min"), -2.0);
}

TEST(ScriptObjectTest, RefusedCallsSayWhatWasExpectedAndReachNoCode)
{
    FakeEngine engine;
    const ScriptValue fader = engine.Run("studio.Fader.new", {}, {"x"});
    const ScriptValue empty = utility::TransformObjectIntoScriptingObject(std::shared_ptr<Take>());
    const auto run = [&](const char* inName, Arguments inArguments) {
        return engine.Run(std::string("studio.Fader.") + inName, fader, std::move(inArguments)).GetString();
    };
    EXPECT_EQ(run("fade", {1}), "TypeError: studio.Fader.fade: expected 2 arguments (gain, frames), got 1");
    EXPECT_EQ(run("isLinked", {1, 2}), "TypeError: studio.Fader.isLinked: expected 0 arguments, got 2");
    EXPECT_EQ(run("fade", {"loud", ScriptArray{}}),
              "TypeError: studio.Fader.fade: parameter \"gain\": expected number, got string \"loud\"");
    EXPECT_EQ(run("fade", {1, ScriptArray{1, 2.5}}),
              "TypeError: studio.Fader.fade: parameter \"frames[1]\": expected integer, got number 2.5");
    EXPECT_EQ(run("link", {empty}),
              "TypeError: studio.Fader.link: parameter \"other\": expected studio.Fader "
              "object, got studio.tape.Take object");
    EXPECT_EQ(run("link", {ScriptValue()}),
              "TypeError: studio.Fader.link: parameter \"other\": expected studio.Fader object, got nothing");
    EXPECT_EQ(run("apply", {fader}), "TypeError: studio.Fader.apply: parameter \"take\": expected "
                                     "studio.tape.Take object, got studio.Fader object");
    EXPECT_EQ(run("apply", {empty}), "Error: no take");
    EXPECT_EQ(run("new", {true}),
              "TypeError: studio.Fader.constructor: parameter \"name\": expected string, got bool true");
    EXPECT_EQ(run("gain=", {ScriptArray{}}),
              "TypeError: studio.Fader.gain: parameter \"value\": expected number, got array of 0");
    EXPECT_EQ(run("gain=", {-1}), "TypeError: A gain is not negative.");
    EXPECT_EQ(run("name=", {"y"}), "Error: studio.Fader.name is read-only");
    EXPECT_EQ(run("break", {}), "Error: broken");
    EXPECT_EQ(engine.Run("studio.Fader.isLinked", empty).GetString(),
              "Error: studio.Fader.isLinked: called on studio.tape.Take");
    EXPECT_EQ(engine.Run("studio.Fader.gain", fader), 1.0);
}

TEST(ScriptObjectTest, ObjectsAnswerByNameWithoutAnEngine)
{
    const ScriptObjectPtr fader = utils::CreateScriptObject("studio.Fader", std::vector<ScriptValue>{"solo"});
    EXPECT_EQ(fader->GetPropertyNames(), (std::vector<std::string>{"gain", "name"}));
    EXPECT_EQ(fader->GetProperty("name"), "solo");
    fader->SetProperty("gain", 0.5F);
    EXPECT_EQ(fader->GetProperty("gain"), 0.5);
    EXPECT_EQ(fader->CallMethod("isLinked", {}), false);
    EXPECT_THROW(fader->CallMethod("gain", {}), ScriptException);
    EXPECT_THROW((void)fader->GetProperty("fade"), ScriptException);
    EXPECT_THROW(fader->SetProperty("pan", 1), ScriptException);
    EXPECT_THROW((void)utils::CreateScriptObject("studio.Nobody"), ScriptException);
    EXPECT_THROW((void)utils::CreateScriptObject("studio.tape.Take"), ScriptException);
    try {
        (void)utils::CreateScriptObject("studio.Fader", std::vector<ScriptValue>{7});
        FAIL();
    } catch (const ParameterErrorException& exception) {
        EXPECT_EQ(exception.GetItem(), "studio.Fader.constructor");
        EXPECT_EQ(exception.GetParameter(), "name");
        EXPECT_EQ(exception.GetExpected(), "string");
        EXPECT_EQ(exception.GetGot(), "integer 7");
        EXPECT_EQ(exception.GetResult(), kResultScriptParameterError);
    }
}

TEST(ScriptObjectTest, AnonymousObjectsKeepOrderAndReplaceByName)
{
    const auto object = utils::CreateScriptObject<AnonObject>(AnonObject::Properties{{"b", 1}, {"a", "x"}});
    object->SetProperty("b", 2);
    object->SetProperty("c", ScriptArray{1, true});
    EXPECT_EQ(object->GetPropertyNames(), (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_EQ(object->GetProperty("b"), 2);
    EXPECT_EQ(object->FindProperty("d"), nullptr);
    EXPECT_THROW((void)object->GetProperty("d"), ScriptException);
    EXPECT_THROW(object->CallMethod("b", {}), ScriptException);
}

} // namespace
} // namespace velmora::test
