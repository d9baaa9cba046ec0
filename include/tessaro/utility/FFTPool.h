#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <brisken/transform/FFT.h>
#include <ombrel/allocator/STLAllocator.h>
#include <tessaro/Export.h>

namespace tessaro {

/// Real Fourier transforms of several lengths, one for each power of two, made when first asked for, and one
/// work buffer for all of them.
///
/// Ask for the orders that processing will need when configuring (`AddOrder`), then transform with
/// `brisken::transform::FFTFwd` and `FFTInv`:
///
///     brisken::transform::FFTFwd(samples, spectrum, pool.GetFFT(10), pool.GetFFTBuffer());
///
/// An order is the base-2 logarithm of the transform length: 10 is a length of 1024.
///
/// The transforms share the work buffer, so only one of them may run at a time. One thread at a time.
///
/// Copies share: a copy has the states of its source and its buffer pointer goes on pointing to the source's
/// buffer, until an order that is new to the copy gives it a buffer of its own. A copy never destroys the
/// states it was given, only those that it made. It must not be used once its source is gone or has grown.
class TESSARO_EXPORT FFTPool
{
public:
    /// Orders from here on give no transform.
    static constexpr unsigned kNumOrders = 32;

    /// `inName` is for diagnostics.
    explicit FFTPool(const std::string& inName);
    ~FFTPool();
    FFTPool(const FFTPool& inOther);
    FFTPool& operator=(const FFTPool& inOther);

    /// Makes the transform of an order unless it is there already, and grows the work buffer where it needs
    /// more; nothing for orders of `kNumOrders` and above. Throws `std::length_error` for the orders above
    /// `brisken::transform::kMaxFFTOrder` and `std::bad_alloc`; the pool is as before then. `[control]`
    void AddOrder(unsigned inOrder);

    /// The transform of an order, made as by `AddOrder` if needed; null for orders of `kNumOrders` and above.
    /// It lives as long as the pool. `[real-time]` for an order that is there, else `[control]`.
    [[nodiscard]] brisken::FFTState_Float* GetFFT(unsigned inOrder)
    {
        if (inOrder < kNumOrders && mStates[inOrder]) {
            return mStates[inOrder];
        }
        AddOrder(inOrder);
        return inOrder < kNumOrders ? mStates[inOrder] : nullptr;
    }

    /// The work buffer, large enough for each transform made so far; null while none of them needs any. A new
    /// order may move it. `[real-time]`
    [[nodiscard]] unsigned char* GetFFTBuffer() const { return mBuffer; }

    [[nodiscard]] const std::string& GetName() const { return mName; }

private:
    void FreeStatesExcept(const std::array<brisken::FFTState_Float*, kNumOrders>& inKept);

    std::string mName;
    std::array<brisken::FFTState_Float*, kNumOrders> mStates{};
    std::vector<unsigned char, ombrel::allocator::STLAllocator<unsigned char>> mWork;
    unsigned char* mBuffer = nullptr;
    std::uint32_t mOwned = 0; ///< bit n: the state of order n was made here
};

} // namespace tessaro
