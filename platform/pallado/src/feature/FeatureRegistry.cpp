#include "feature/FeatureRegistry.h"

#include <algorithm>
#include <cstdint>

namespace pallado::feature {

void FeatureRegistry::Entry::Update() noexcept
{
    const bool enabled = !mDeclarations.empty() &&
                         mHostSetting.value_or(IsEnabledByDefault(mDeclarations.front()->GetStage()));
    mEnabled.store(enabled, std::memory_order_release);
}

// FNV-1a.
std::size_t FeatureRegistry::GetBucket(std::string_view inId) noexcept
{
    std::uint32_t hash = 2166136261U;
    for (const char character : inId) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
    }
    return (hash ^ (hash >> 16)) % kBucketCount;
}

FeatureRegistry::Entry* FeatureRegistry::Find(std::string_view inId) const noexcept
{
    Entry* entry = mBuckets[GetBucket(inId)].load(std::memory_order_acquire);
    while (entry != nullptr && entry->mId != inId) {
        entry = entry->mNext;
    }
    return entry;
}

FeatureRegistry::Entry& FeatureRegistry::FindOrAdd(std::string_view inId)
{
    if (Entry* const found = Find(inId)) {
        return *found;
    }
    std::atomic<Entry*>& head = mBuckets[GetBucket(inId)];
    auto* const entry = new Entry(inId, head.load(std::memory_order_relaxed));
    head.store(entry, std::memory_order_release);
    return *entry;
}

template <typename Function>
void FeatureRegistry::ForEach(Function inFunction) const
{
    for (const auto& head : mBuckets) {
        for (Entry* entry = head.load(std::memory_order_acquire); entry != nullptr; entry = entry->mNext) {
            inFunction(*entry);
        }
    }
}

void FeatureRegistry::Declare(const BetaFeature& inFeature)
{
    const std::lock_guard lock(mWriteMutex);
    Entry& entry = FindOrAdd(inFeature.GetId());
    entry.mDeclarations.push_back(&inFeature);
    entry.Update();
}

void FeatureRegistry::Withdraw(const BetaFeature& inFeature) noexcept
{
    const std::lock_guard lock(mWriteMutex);
    Entry& entry = *Find(inFeature.GetId());
    std::erase(entry.mDeclarations, &inFeature);
    entry.Update();
}

void FeatureRegistry::Set(std::string_view inId, bool inEnabled)
{
    const std::lock_guard lock(mWriteMutex);
    Entry& entry = FindOrAdd(inId);
    entry.mHostSetting = inEnabled;
    entry.Update();
}

void FeatureRegistry::Reset(std::string_view inId)
{
    const std::lock_guard lock(mWriteMutex);
    if (Entry* const entry = Find(inId)) {
        entry->mHostSetting.reset();
        entry->Update();
    }
}

void FeatureRegistry::ResetAll()
{
    const std::lock_guard lock(mWriteMutex);
    ForEach([](Entry& ioEntry) {
        ioEntry.mHostSetting.reset();
        ioEntry.Update();
    });
}

bool FeatureRegistry::IsEnabled(std::string_view inId) const noexcept
{
    const Entry* const entry = Find(inId);
    return entry != nullptr && entry->mEnabled.load(std::memory_order_acquire);
}

std::vector<FeatureInfo> FeatureRegistry::List() const
{
    std::vector<FeatureInfo> features;
    const std::lock_guard lock(mWriteMutex);
    ForEach([&features](const Entry& inEntry) {
        if (!inEntry.mDeclarations.empty()) {
            const BetaFeature& feature = *inEntry.mDeclarations.front();
            features.push_back({inEntry.mId, feature.GetStage(), feature.GetNameKey(),
                                feature.GetDescriptionKey(), inEntry.mEnabled.load(std::memory_order_relaxed),
                                inEntry.mHostSetting.has_value()});
        }
    });
    std::sort(features.begin(), features.end(),
              [](const FeatureInfo& inA, const FeatureInfo& inB) { return inA.mId < inB.mId; });
    return features;
}

} // namespace pallado::feature
