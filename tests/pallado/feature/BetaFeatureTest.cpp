#include <pallado/feature/BetaFeature.h>
#include <pallado/feature/FeatureHost.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace pallado::feature {
namespace {

// What the constructors of static objects find: earlier and later ones of this file.
const BetaFeature kAtLoad("load.Released", FeatureStage::kReleased, "$$$/load/Name=Load", nullptr);
const bool kEnabledDuringLoad = IsFeatureEnabled("load.Released");
const bool kLaterEnabledDuringLoad = IsFeatureEnabled("load.Later");
const BetaFeature kLaterAtLoad("load.Later", FeatureStage::kReleased, "", "");

class BetaFeatureTest : public testing::Test
{
protected:
    ~BetaFeatureTest() override { ResetAllFeatures(); }
};

FeatureInfo Get(const std::string& inId)
{
    for (FeatureInfo& info : GetDeclaredFeatures()) {
        if (info.mId == inId) {
            return std::move(info);
        }
    }
    ADD_FAILURE() << inId << " is not declared";
    return {};
}

TEST_F(BetaFeatureTest, DeclarationAtLoadIsSeenFromThenOn)
{
    EXPECT_TRUE(kEnabledDuringLoad);
    EXPECT_FALSE(kLaterEnabledDuringLoad);
    EXPECT_TRUE(IsFeatureEnabled("load.Later"));
    EXPECT_EQ(Get("load.Released").mNameKey, "$$$/load/Name=Load");
    EXPECT_EQ(Get("load.Released").mDescriptionKey, "");
}

TEST_F(BetaFeatureTest, OnlyReleasedFeaturesAreOnByDefault)
{
    for (int stage = 0; stage <= 3; ++stage) {
        const BetaFeature feature("stage", FeatureStage(stage), "name", "description");
        EXPECT_EQ(IsFeatureEnabled("stage"), stage == 3);
        EXPECT_EQ(Get("stage").mStage, FeatureStage(stage));
        EXPECT_EQ(Get("stage").mEnabled, stage == 3);
        EXPECT_FALSE(Get("stage").mSetByHost);
    }
}

TEST_F(BetaFeatureTest, UnknownIdsAreOff)
{
    EXPECT_FALSE(IsFeatureEnabled("nobody.DeclaresThis"));
    EXPECT_FALSE(IsFeatureEnabled(""));
    EXPECT_FALSE(IsFeatureEnabled(nullptr));
    SetFeatureEnabled("nobody.DeclaresThis", true);
    EXPECT_FALSE(IsFeatureEnabled("nobody.DeclaresThis"));
    for (const FeatureInfo& info : GetDeclaredFeatures()) {
        EXPECT_NE(info.mId, "nobody.DeclaresThis");
    }
}

TEST_F(BetaFeatureTest, SettingOutlivesDeclarationsUntilReset)
{
    SetFeatureEnabled("setting", true);
    for (int round = 0; round < 2; ++round) {
        const BetaFeature feature("setting", FeatureStage::kBeta, "", "");
        EXPECT_TRUE(IsFeatureEnabled("setting"));
        EXPECT_TRUE(Get("setting").mSetByHost);
    }
    EXPECT_FALSE(IsFeatureEnabled("setting"));

    const BetaFeature feature("setting", FeatureStage::kReleased, "", "");
    SetFeatureEnabled("setting", false);
    EXPECT_FALSE(IsFeatureEnabled("setting"));
    ResetFeature("setting");
    ResetFeature("never.Heard");
    EXPECT_TRUE(IsFeatureEnabled("setting"));
}

TEST_F(BetaFeatureTest, EarliestStandingDeclarationOfAnIdCounts)
{
    auto* const first = new BetaFeature("twice", FeatureStage::kReleased, "first", "");
    const BetaFeature second("twice", FeatureStage::kBeta, "second", "");
    EXPECT_EQ(Get("twice").mNameKey, "first");
    EXPECT_TRUE(IsFeatureEnabled("twice"));
    delete first;
    EXPECT_EQ(Get("twice").mNameKey, "second");
    EXPECT_FALSE(IsFeatureEnabled("twice"));
}

TEST_F(BetaFeatureTest, ManyFeaturesAreListedByIdAndKeptApart)
{
    std::vector<std::string> ids;
    std::vector<std::unique_ptr<BetaFeature>> features;
    for (int i = 0; i < 500; ++i) {
        ids.push_back("many." + std::to_string(i));
    }
    for (const std::string& id : ids) {
        features.push_back(std::make_unique<BetaFeature>(id.c_str(), FeatureStage::kBeta, "", ""));
    }
    for (int i = 0; i < 500; i += 3) {
        SetFeatureEnabled(ids[i], true);
    }
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(IsFeatureEnabled(ids[i].c_str()), i % 3 == 0) << i;
    }
    const std::vector<FeatureInfo> listed = GetDeclaredFeatures();
    EXPECT_GE(listed.size(), 500u);
    EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end(),
                               [](const auto& inA, const auto& inB) { return inA.mId < inB.mId; }));
}

TEST_F(BetaFeatureTest, ReadersRunBesideDeclarationsAndSettings)
{
    std::atomic<bool> done{false};
    std::atomic<int> readings{0};
    std::thread reader([&] {
        do {
            for (int i = 0; i < 100; ++i) {
                readings += IsFeatureEnabled(("race." + std::to_string(i)).c_str()) ? 1 : 0;
            }
            EXPECT_TRUE(IsFeatureEnabled("load.Released"));
        } while (!done);
    });
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 2; ++writer) {
        writers.emplace_back([writer] {
            for (int i = 0; i < 100; ++i) {
                const std::string id = "race." + std::to_string(i);
                const BetaFeature feature(id.c_str(), FeatureStage::kBeta, "", "");
                SetFeatureEnabled(id, writer == 0);
                (void)GetDeclaredFeatures();
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    done = true;
    reader.join();
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(IsFeatureEnabled(("race." + std::to_string(i)).c_str()));
    }
}

} // namespace
} // namespace pallado::feature
