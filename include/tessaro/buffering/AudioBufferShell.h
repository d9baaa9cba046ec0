#pragma once

#include <cstddef>

#include <ombrel/allocator/RecycledMemory.h>
#include <tessaro/Export.h>
#include <tessaro/buffering/AudioBuffer.h>

namespace tessaro {

/// A buffer around rows that belong to the caller, with flags of its own.
///
/// `Init` makes the table of row pointers once; `Assign` then points it at other rows for each block. The
/// rows must stay while the shell is used; it never owns samples. Rows need no alignment.
///
/// `Init` allocates and may throw, all else is `[real-time]`. One thread at a time.
class TESSARO_EXPORT AudioBufferShell : public AudioBuffer
{
public:
    AudioBufferShell();
    AudioBufferShell(const AudioBufferShell&) = delete;
    AudioBufferShell& operator=(const AudioBufferShell&) = delete;
    ~AudioBufferShell() override;

    /// Makes the table for `inChannels` rows; there are no samples yet. [control]
    void Init(std::size_t inChannels);

    /// Points the shell at rows of `inSize` samples: one row for each of its channels. Never silent
    /// afterwards.
    void Assign(float* const* inChannels, unsigned inSize);

    /// Sets the number of samples in use, at most what `Assign` was given.
    void SetUseSize(unsigned inSize) override;

private:
    ombrel::allocator::RecycledMemory mTable;
};

} // namespace tessaro
