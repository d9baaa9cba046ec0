#include "ChainReader.h"

#include <algorithm>

namespace host {

ChainReader::ChainReader(AudioSource& ioSource, EffectChain& ioChain, unsigned inBlock, std::int64_t inTail)
    : mSource(ioSource),
      mChain(ioChain),
      mMaxBlock(inBlock),
      mToFeed(ioChain.GetLatency() + inTail),
      mToDrop(ioChain.GetLatency()),
      mBlock(static_cast<std::size_t>(ioSource.GetChannelCount()), inBlock)
{
    mKept.Init(mBlock.GetChannelCount());
}

bool ChainReader::FillBlock()
{
    if (mSource.Read(mBlock, mMaxBlock) > 0) {
        return true;
    }
    const auto count = static_cast<unsigned>(std::min<std::int64_t>(mToFeed, mMaxBlock));
    mToFeed -= count;
    mBlock.SetUseSize(count);
    mBlock.Zero();
    return count > 0;
}

tessaro::AudioBuffer* ChainReader::Read()
{
    while (FillBlock()) {
        if (mMeters != nullptr) {
            mMeters->AddInput(mBlock);
        }
        mChain.Process(mBlock);
        if (mMeters != nullptr) {
            mMeters->AddOutput(mBlock, mChain);
        }
        const auto dropped = static_cast<unsigned>(std::min<std::int64_t>(mToDrop, mBlock.GetBufferSize()));
        mToDrop -= dropped;
        if (dropped == 0) {
            return &mBlock;
        }
        if (dropped < mBlock.GetBufferSize()) {
            mKept.Assign(mBlock, dropped);
            return &mKept;
        }
    }
    return nullptr;
}

} // namespace host
