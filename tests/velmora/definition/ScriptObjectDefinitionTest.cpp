#include <velmora/definition/ScriptObjectDefinition.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <velmora/ScriptException.h>
#include <velmora/definition/Registry.h>

namespace velmora::definition {
namespace {

struct Base : ScriptObject
{
    static void DefineObject(ScriptObjectDefinition<Base>& ioDefinition)
    {
        if (gDefine != nullptr) {
            gDefine(ioDefinition);
        }
    }
    int GetNumber() const noexcept { return mNumber; }
    void SetNumber(int inNumber) { mNumber = inNumber; }

    int mNumber = 1;
    static inline void (*gDefine)(ScriptObjectDefinition<Base>&) = nullptr;
};

struct Derived : Base
{
};

using Definition = ScriptObjectDefinition<Base>;

TEST(ScriptObjectDefinitionTest, FaultsInNamesLeaveNothingRegistered)
{
    const auto expectRefused = [](const char* inMessage, void (*inDefine)(Definition&)) {
        Base::gDefine = inDefine;
        try {
            const Definition definition("Refused", "");
            ADD_FAILURE() << inMessage;
        } catch (const ScriptException& exception) {
            EXPECT_STREQ(exception.what(), inMessage);
        }
        EXPECT_EQ(FindDefinition(typeid(Base)), nullptr);
        Base::gDefine = nullptr;
    };
    expectRefused("Refused: \"a-b\" is no name for an item",
                  [](Definition& ioDefinition) { ioDefinition.AddConstant("a-b", "", 1); });
    expectRefused("Refused: \"1st\" is no name for an item",
                  [](Definition& ioDefinition) { ioDefinition.AddConstant("1st", "", 1); });
    expectRefused("Refused: \"\" is no name for an item",
                  [](Definition& ioDefinition) { ioDefinition.AddMethod("", "", &Base::GetNumber); });
    expectRefused("a.Refused.number is defined twice", [](Definition& ioDefinition) {
        ioDefinition.AddNamespace("a");
        ioDefinition.AddProperty("number", "", &Base::GetNumber, &Base::SetNumber);
        ioDefinition.AddMethod("number", "", &Base::GetNumber);
    });
    expectRefused("Refused.constructor is defined twice", [](Definition& ioDefinition) {
        ioDefinition.AddConstructor("");
        ioDefinition.AddConstructor("");
    });
    expectRefused("Refused: \"a..b\" is no name for a namespace",
                  [](Definition& ioDefinition) { ioDefinition.AddNamespace("a..b"); });
    EXPECT_THROW(Definition("no name", ""), ScriptException);
}

TEST(ScriptObjectDefinitionTest, EarliestStandingDefinitionOfANameOrClassIsFound)
{
    std::optional<Definition> first;
    first.emplace("Twice", "first");
    const Definition second("Twice", "second");
    const auto count = [] {
        const auto definitions = GetDefinitions();
        return std::ranges::count_if(
            definitions, [](const auto* inDefinition) { return inDefinition->GetClassName() == "Twice"; });
    };
    EXPECT_EQ(FindDefinition("Twice"), &*first);
    EXPECT_EQ(Base().GetDefinition(), &*first);
    EXPECT_EQ(count(), 1);
    first.reset();
    EXPECT_EQ(FindDefinition("Twice"), &second);
    EXPECT_EQ(Base().GetDefinition(), &second);
    EXPECT_EQ(count(), 1);
}

TEST(ScriptObjectDefinitionTest, ItemsServeDerivedObjectsButNoOthers)
{
    Base::gDefine = [](Definition& ioDefinition) {
        ioDefinition.AddConstructor("Create.");
        ioDefinition.AddProperty("number", "", &Base::GetNumber, &Base::SetNumber);
    };
    const Definition definition("Base", "");
    Base::gDefine = nullptr;
    Derived derived;
    const auto& property = *definition.FindProperty("number");
    property.Set(derived, 5.0);
    EXPECT_EQ(property.Get(derived), 5);
    EXPECT_EQ(derived.GetDefinition(), nullptr);
    EXPECT_THROW((void)derived.GetProperty("number"), ScriptException);
    AnonObject anon;
    EXPECT_THROW(property.Set(anon, 5), ScriptException);
    EXPECT_EQ(definition.GetConstructor()->Construct({})->GetProperty("number"), 1);
    EXPECT_EQ(definition.FindItem("constructor"), definition.GetConstructor());
    EXPECT_EQ(definition.FindItem("nothing"), nullptr);
}

TEST(ScriptObjectDefinitionTest, LibrariesMayLoadWhileAnotherThreadWalks)
{
    std::atomic<bool> done{false};
    std::thread walker([&] {
        do {
            (void)FindDefinition("Loaded0");
            (void)FindDefinition(typeid(Derived));
        } while (!done);
    });
    std::vector<std::thread> loaders;
    for (int loader = 0; loader < 2; ++loader) {
        loaders.emplace_back([loader] {
            for (int i = 0; i < 200; ++i) {
                const Definition definition("Loaded" + std::to_string(loader), "");
                EXPECT_EQ(FindDefinition("Loaded" + std::to_string(loader)), &definition);
            }
        });
    }
    for (std::thread& loader : loaders) {
        loader.join();
    }
    done = true;
    walker.join();
    EXPECT_EQ(FindDefinition(typeid(Base)), nullptr);
}

// Parameters are declared as the function takes them, no conversion in between.
static_assert(details::TakesParameters<decltype(&Base::SetNumber), Base, int>);
static_assert(!details::TakesParameters<decltype(&Base::SetNumber), Base, unsigned>);
static_assert(!details::TakesParameters<decltype(&Base::SetNumber), Base, double>);
static_assert(!details::TakesParameters<decltype(&Base::SetNumber), Base>);
static_assert(details::TakesParameters<void (*)(Base&, const std::string&), Base, std::string>);
static_assert(!details::TakesParameters<void (*)(Base&, std::string&), Base, std::string>);

} // namespace
} // namespace velmora::definition
