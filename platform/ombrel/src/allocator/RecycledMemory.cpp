#include <ombrel/allocator/RecycledMemory.h>

#include <ombrel/allocator/MemoryRecycler.h>

namespace ombrel::allocator {

RecycledMemory::RecycledMemory(std::size_t inBytes)
{
    Allocate(inBytes);
}

RecycledMemory::~RecycledMemory()
{
    MemoryRecycler::Recycle(mMemory, mGrantedSize);
}

RecycledMemory::RecycledMemory(RecycledMemory&& ioOther) noexcept
    : mMemory(std::exchange(ioOther.mMemory, nullptr)),
      mSize(std::exchange(ioOther.mSize, 0)),
      mGrantedSize(std::exchange(ioOther.mGrantedSize, 0))
{
}

RecycledMemory& RecycledMemory::operator=(RecycledMemory&& ioOther) noexcept
{
    RecycledMemory taken(std::move(ioOther));
    std::swap(mMemory, taken.mMemory);
    std::swap(mSize, taken.mSize);
    std::swap(mGrantedSize, taken.mGrantedSize);
    return *this;
}

std::shared_ptr<RecycledMemory> RecycledMemory::Create(std::size_t inBytes)
{
    return std::make_shared<RecycledMemory>(inBytes);
}

void RecycledMemory::Allocate(std::size_t inBytes)
{
    const bool fits = mMemory != nullptr && MemoryRecycler::GrantedSize(inBytes) == mGrantedSize;
    if (!fits) {
        std::size_t granted = 0;
        void* memory = MemoryRecycler::Allocate(inBytes, granted);
        MemoryRecycler::Recycle(mMemory, mGrantedSize);
        mMemory = memory;
        mGrantedSize = granted;
    }
    mSize = inBytes;
}

} // namespace ombrel::allocator
