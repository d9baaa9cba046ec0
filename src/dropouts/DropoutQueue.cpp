#include "DropoutQueue.h"

#include <new>
#include <utility>

namespace tessaro::dropouts {

namespace {

constexpr int kAddressBits = 48;
constexpr std::uint64_t kAddressMask = (std::uint64_t{1} << kAddressBits) - 1;
constexpr std::uint64_t kOneCount = std::uint64_t{1} << kAddressBits;

static_assert(sizeof(void*) == sizeof(std::uint64_t), "tagged words need addresses of at most 48 bits");

} // namespace

/// Read by threads that are about to find out that the node has been recycled meanwhile, hence all atomic.
/// The fields are written with release and read with acquire order: whoever reads a field of the node's next
/// life is then sure to see, too, that the head has moved since.
struct alignas(64) DropoutQueue::Node
{
    std::atomic<TaggedWord> mNext{0}; ///< in the queue or in the free list
    std::atomic<std::uint32_t> mContextId{0};
    std::atomic<std::int64_t> mFrameRate{0};
    std::atomic<std::int64_t> mTime{0};
    std::atomic<std::uint32_t> mReason{0};
    Node* mMadeBefore = nullptr; ///< a chain of all nodes, by which the queue owns them

    void Write(const DropoutRecord& inRecord) noexcept
    {
        mContextId.store(inRecord.mContextId, std::memory_order_release);
        mFrameRate.store(inRecord.mFrameRate, std::memory_order_release);
        mTime.store(inRecord.mTime, std::memory_order_release);
        mReason.store(inRecord.mReason, std::memory_order_release);
    }

    DropoutRecord Read() const noexcept
    {
        return {mContextId.load(std::memory_order_acquire), mFrameRate.load(std::memory_order_acquire),
                mTime.load(std::memory_order_acquire), mReason.load(std::memory_order_acquire)};
    }
};

DropoutQueue::DropoutQueue()
{
    static_assert(sizeof(Node) == 64);
    constexpr std::size_t kNodes = kReadyRecords + 1; // one stands before the first record
    for (std::size_t i = 0; i < kNodes; ++i) {
        Node* const node = MakeNode();
        if (node == nullptr) {
            throw std::bad_alloc();
        }
        GiveFreeNode(node);
    }
    Node* const first = TakeFreeNode();
    first->mNext.store(Replace(first->mNext, nullptr), std::memory_order_relaxed);
    mHead.store(Replace(0, first), std::memory_order_relaxed);
    mTail.store(Replace(0, first), std::memory_order_release);
}

DropoutQueue::~DropoutQueue()
{
    const Node* node = mLastMade;
    while (node != nullptr) {
        delete std::exchange(node, node->mMadeBefore);
    }
}

void DropoutQueue::Push(const DropoutRecord& inRecord) noexcept
{
    Node* node = TakeFreeNode();
    if (node == nullptr && (node = MakeNode()) == nullptr) {
        return;
    }
    node->Write(inRecord);
    node->mNext.store(Replace(node->mNext.load(std::memory_order_relaxed), nullptr),
                      std::memory_order_release);
    while (true) {
        const TaggedWord tail = mTail.load(std::memory_order_acquire);
        std::atomic<TaggedWord>& place = ToNode(tail)->mNext;
        const TaggedWord next = place.load(std::memory_order_acquire);
        if (tail != mTail.load(std::memory_order_acquire)) {
            continue; // the node may have left the queue before its next word was read
        }
        if (ToNode(next) != nullptr) {
            Swap(mTail, tail, ToNode(next));
        } else if (Swap(place, next, node)) {
            Swap(mTail, tail, node); // or somebody else has moved it on
            return;
        }
    }
}

bool DropoutQueue::Pop(DropoutRecord& outRecord) noexcept
{
    while (true) {
        const TaggedWord head = mHead.load(std::memory_order_acquire);
        const TaggedWord tail = mTail.load(std::memory_order_acquire);
        Node* const next = ToNode(ToNode(head)->mNext.load(std::memory_order_acquire));
        if (head != mHead.load(std::memory_order_acquire)) {
            continue;
        }
        if (ToNode(head) == ToNode(tail)) {
            if (next == nullptr) {
                return false;
            }
            Swap(mTail, tail, next);
        } else if (next != nullptr) {
            // Before the swap: behind it another thread may recycle the node.
            const DropoutRecord record = next->Read();
            if (Swap(mHead, head, next)) {
                outRecord = record;
                GiveFreeNode(ToNode(head));
                return true;
            }
        }
    }
}

DropoutQueue::Node* DropoutQueue::ToNode(TaggedWord inWord) noexcept
{
    return reinterpret_cast<Node*>(inWord & kAddressMask);
}

/// The word that puts a node in the place of another, with the counter advanced.
DropoutQueue::TaggedWord DropoutQueue::Replace(TaggedWord inWord, const Node* inNode) noexcept
{
    return ((inWord & ~kAddressMask) + kOneCount) | reinterpret_cast<TaggedWord>(inNode);
}

bool DropoutQueue::Swap(std::atomic<TaggedWord>& ioPlace, TaggedWord inExpected, const Node* inNode) noexcept
{
    return ioPlace.compare_exchange_strong(inExpected, Replace(inExpected, inNode), std::memory_order_acq_rel,
                                           std::memory_order_relaxed);
}

/// Null if there is no memory.
DropoutQueue::Node* DropoutQueue::MakeNode() noexcept
{
    auto* const node = new (std::nothrow) Node;
    if (node != nullptr) {
        node->mMadeBefore = mLastMade.load(std::memory_order_relaxed);
        while (!mLastMade.compare_exchange_weak(node->mMadeBefore, node, std::memory_order_relaxed)) {
        }
    }
    return node;
}

/// Null if there is none.
DropoutQueue::Node* DropoutQueue::TakeFreeNode() noexcept
{
    while (true) {
        const TaggedWord first = mFree.load(std::memory_order_acquire);
        Node* const node = ToNode(first);
        if (node == nullptr || Swap(mFree, first, ToNode(node->mNext.load(std::memory_order_acquire)))) {
            return node;
        }
    }
}

void DropoutQueue::GiveFreeNode(Node* inNode) noexcept
{
    TaggedWord first = mFree.load(std::memory_order_relaxed);
    do {
        inNode->mNext.store(Replace(inNode->mNext.load(std::memory_order_relaxed), ToNode(first)),
                            std::memory_order_release);
    } while (!mFree.compare_exchange_weak(first, Replace(first, inNode), std::memory_order_acq_rel,
                                          std::memory_order_relaxed));
}

} // namespace tessaro::dropouts
