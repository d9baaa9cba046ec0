#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <ombrel/utility/Noncopyable.h>

namespace tessaro::dropouts {

/// What a real-time thread leaves behind about a dropout.
struct DropoutRecord
{
    std::uint32_t mContextId;
    std::int64_t mFrameRate; ///< ticks per frame
    std::int64_t mTime;      ///< ticks
    std::uint32_t mReason;
};

/// A lock-free queue for any number of writers and readers (M. Michael, M. Scott, "Simple, fast, and
/// practical non-blocking and blocking concurrent queue algorithms", 1996), with a free list that its nodes
/// come from and return to.
///
/// The words that threads swap are tagged: the low 48 bits are the address of a node, the high 16 a counter
/// that goes up with every change, so that a node that went away and came back isn't taken for one that
/// stayed. Nodes are not freed before the queue's end, so that every address that a thread has read can be
/// looked at.
class DropoutQueue : private ombrel::utility::noncopyable
{
public:
    DropoutQueue();
    ~DropoutQueue();

    /// Allocates only if more than `kReadyRecords` records wait; loses the record if that fails.
    void Push(const DropoutRecord& inRecord) noexcept;

    /// False if the queue is empty.
    bool Pop(DropoutRecord& outRecord) noexcept;

    static constexpr std::size_t kReadyRecords = 100;

private:
    using TaggedWord = std::uint64_t;
    struct Node;

    static Node* ToNode(TaggedWord inWord) noexcept;
    static TaggedWord Replace(TaggedWord inWord, const Node* inNode) noexcept;
    static bool Swap(std::atomic<TaggedWord>& ioPlace, TaggedWord inExpected, const Node* inNode) noexcept;

    Node* MakeNode() noexcept;
    Node* TakeFreeNode() noexcept;
    void GiveFreeNode(Node* inNode) noexcept;

    static constexpr std::size_t kCacheLine = 64;

    alignas(kCacheLine) std::atomic<TaggedWord> mHead{0}; ///< the node before the first record
    alignas(kCacheLine) std::atomic<TaggedWord> mTail{0}; ///< the last node or one not far before it
    alignas(kCacheLine) std::atomic<TaggedWord> mFree{0};
    alignas(kCacheLine) std::atomic<Node*> mLastMade{nullptr};
};

} // namespace tessaro::dropouts
