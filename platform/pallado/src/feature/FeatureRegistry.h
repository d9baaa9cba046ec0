#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pallado/feature/BetaFeature.h>
#include <pallado/feature/FeatureHost.h>

namespace pallado::feature {

/// Every id that was ever declared or set, in a hash table that only grows.
///
/// Readers walk a bucket's list without a lock: entries are published by one release store at the list's head
/// and are never changed in their id, moved or freed. That bounds the memory by the number of different ids,
/// which is small. Writers hold the mutex.
///
/// The one instance is constant-initialised and has no destructor to run, which is what makes declarations at
/// load and withdrawals at exit independent of the order of static objects.
class FeatureRegistry
{
public:
    constexpr FeatureRegistry() noexcept = default;

    void Declare(const BetaFeature& inFeature);
    void Withdraw(const BetaFeature& inFeature) noexcept;
    void Set(std::string_view inId, bool inEnabled);
    void Reset(std::string_view inId);
    void ResetAll();
    [[nodiscard]] bool IsEnabled(std::string_view inId) const noexcept;
    [[nodiscard]] std::vector<FeatureInfo> List() const;

private:
    struct Entry
    {
        Entry(std::string_view inId, Entry* inNext) : mId(inId), mNext(inNext) {}

        const std::string mId;
        Entry* const mNext;
        /// What readers see; follows from the two below.
        std::atomic<bool> mEnabled{false};
        std::optional<bool> mHostSetting;
        /// In the order of declaration.
        std::vector<const BetaFeature*> mDeclarations;

        void Update() noexcept;
    };

    static constexpr std::size_t kBucketCount = 64;

    [[nodiscard]] static std::size_t GetBucket(std::string_view inId) noexcept;
    /// Null when there is none. All but the id and the state for readers needs the mutex.
    [[nodiscard]] Entry* Find(std::string_view inId) const noexcept;
    Entry& FindOrAdd(std::string_view inId);
    template <typename Function>
    void ForEach(Function inFunction) const;

    mutable std::mutex mWriteMutex;
    std::array<std::atomic<Entry*>, kBucketCount> mBuckets{};
};

} // namespace pallado::feature
