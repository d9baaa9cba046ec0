#include <ombrel/config/Application.h>
#include <ombrel/config/InitializerRegistrar.h>
#include <ombrel/config/Localizer.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ombrel/string/Unicode.h>

namespace {

using namespace ombrel::config;
using Context = EInitializerContextFlags;

class StartUpTest : public ::testing::Test
{
protected:
    /// Gets the steps of the libraries in this program out of the way.
    static void SetUpTestSuite() { RunStartUpSequence(Context::kAll); }

    std::function<bool()> Note(const std::string& inName, bool inResult = true)
    {
        return [this, inName, inResult] {
            mRan.push_back(inName);
            return inResult;
        };
    }
    /// Runs the steps of `inContext` and returns the failures as "name: reason".
    static std::vector<std::string> Failures(Context inContext)
    {
        std::vector<std::string> failures;
        for (const auto& failure : RunStartUpSequence(inContext).mFailures) {
            failures.push_back(failure.mName + ": " + failure.mReason);
        }
        return failures;
    }

    std::vector<std::string> mRan;
};

using Names = std::vector<std::string>;

TEST_F(StartUpTest, RunsEachStepOnceBehindItsDependenciesElseInTheOrderOfRegistration)
{
    const InitializerRegistrar last("last", Context::kAll, Note("last"), "first", "middle");
    const InitializerRegistrar first("first", Context::kAll, Note("first"));
    const InitializerRegistrar middle("middle", Context::kAll, Note("middle"), "first");
    const InitializerRegistrar headless("headless", Context::kHeadless, Note("headless"));
    EXPECT_TRUE(mRan.empty()) << "nothing runs at load";
    const auto report = RunStartUpSequence(Context::kApplication | Context::kTest);
    EXPECT_TRUE(report.HasSucceeded());
    EXPECT_EQ(report.mCompleted, (Names{"first", "middle", "last"}));
    EXPECT_EQ(RunStartUpSequence(Context::kAll).mCompleted, Names{"headless"});
    EXPECT_EQ(mRan, (Names{"first", "middle", "last", "headless"}));
}

TEST_F(StartUpTest, FailuresNameTheStepAndTheReason)
{
    const InitializerRegistrar no("no", Context::kTest, Note("no", false));
    const InitializerRegistrar bad("bad", Context::kTest,
                                   [] { return throw std::runtime_error("no disk"), true; });
    const InitializerRegistrar after("after", Context::kTest, Note("after"), "no");
    const InitializerRegistrar lonely("lonely", Context::kTest, Note("lonely"), "missing");
    const InitializerRegistrar apart("apart", Context::kTest, Note("apart"), "elsewhere");
    const InitializerRegistrar elsewhere("elsewhere", Context::kHeadless, Note("elsewhere"));
    const InitializerRegistrar ring("ring", Context::kTest, Note("ring"), "ring");
    EXPECT_EQ(Failures(Context::kTest),
              (Names{"no: reported failure", "bad: threw: no disk", "after: needs \"no\", which failed",
                     "lonely: needs \"missing\", which is not registered",
                     "apart: needs \"elsewhere\", which belongs to other contexts",
                     "ring: needs \"ring\", which could not run"}));
    EXPECT_EQ(mRan, Names{"no"});

    const InitializerRegistrar missing("missing", Context::kTest, Note("missing"));
    EXPECT_EQ(RunStartUpSequence(Context::kTest | Context::kHeadless).mCompleted,
              (Names{"elsewhere", "apart", "missing", "lonely"}))
        << "what had to wait runs later, what failed does not";
}

TEST_F(StartUpTest, AStepMayRegisterOthersAndARegistrarThatIsGoneHasNoStep)
{
    std::unique_ptr<InitializerRegistrar> inner;
    {
        const InitializerRegistrar gone("gone", Context::kTest, Note("gone"));
    }
    const InitializerRegistrar outer("outer", Context::kTest, [&] {
        inner = std::make_unique<InitializerRegistrar>("inner", Context::kTest, Note("inner"), "outer");
        return true;
    });
    EXPECT_EQ(RunStartUpSequence(Context::kTest).mCompleted, (Names{"outer", "inner"}));
}

TEST(LocalizerTest, GivesTheTranslationElseTheTextBehindTheFirstEqualsSign)
{
    constexpr const char* kKey = "$$$/test/Rate=rate = \xC3\xA4";
    EXPECT_EQ(Localizer::Get(kKey), u"rate = \u00E4");
    EXPECT_EQ(Localizer::Get("$$$/test/Empty="), u"");
    EXPECT_EQ(Localizer::Get("plain = text"), u"plain = text");
    EXPECT_EQ(Localizer::Get("$$$/no/default"), u"$$$/no/default");
    Localizer::SetTranslations({{"test/Rate", u"Takt"}});
    EXPECT_EQ(Localizer::Get(kKey), u"Takt");
    EXPECT_EQ(Localizer::Get("$$$/test/Other=other"), u"other");
    Localizer::SetTranslator({});
    EXPECT_EQ(Localizer::Get(kKey), u"rate = \u00E4");
}

TEST(ApplicationTest, TheNameIsTheHostsOnceItIsSet)
{
    const auto before = GetApplicationName();
    EXPECT_FALSE(before.empty());
    SetApplicationName("Sch\xC3\xB6n");
    EXPECT_EQ(GetApplicationName(), ombrel::string::Std8ToUTF8String("Sch\xC3\xB6n"));
    SetApplicationName(ombrel::string::UTF8ToStd8String(before));
}

} // namespace
