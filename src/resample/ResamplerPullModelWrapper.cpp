#include <tessaro/resample/ResamplerPullModelWrapper.h>

#include <algorithm>
#include <utility>

#include "utility/RingBuffer.h"

namespace tessaro {

ResamplerPullModelWrapper::ResamplerPullModelWrapper(std::shared_ptr<Resample> inResample,
                                                     PullCallback inCallback)
    : mCallback(std::move(inCallback)), mResample(std::move(inResample))
{
    // What a chunk gives is fewer than this, so that it fits into the ring once that is empty.
    const int capacity = mResample->GetOutputBufferSize(kInternalChunksize);
    mRing = std::make_shared<RingBuffer<float>>(1, capacity);
    mInput = std::make_shared<AudioBuffer>(1, static_cast<unsigned>(kInternalChunksize));
    mOutput = std::make_shared<AudioBuffer>(1, static_cast<unsigned>(capacity));
}

void ResamplerPullModelWrapper::Process(float* outOutput, std::int64_t inCount)
{
    std::int64_t delivered = 0;
    for (;;) {
        const auto count =
            static_cast<int>(std::min<std::int64_t>(inCount - delivered, mRing->GetNumReadable()));
        if (count > 0) {
            float* const row = outOutput + delivered;
            delivered += mRing->Read(&row, count);
        }
        if (delivered >= inCount) {
            return;
        }
        if (!Refill()) {
            std::fill(outOutput + delivered, outOutput + inCount, 0.0f);
            return;
        }
    }
}

/// Resamples one chunk into the ring, which is empty. False when nothing will ever come.
bool ResamplerPullModelWrapper::Refill()
{
    mCallback(mInput->GetFloatBuffers(), kInternalChunksize);
    const int produced = mResample->Process((*mInput)[0], (*mOutput)[0], kInternalChunksize);
    mRing->Write(mOutput->GetFloatBuffers(), produced);
    return produced > 0 || mResample->IsInitialized();
}

} // namespace tessaro
