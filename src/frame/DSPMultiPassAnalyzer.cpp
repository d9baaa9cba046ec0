#include <tessaro/frame/DSPMultiPassAnalyzer.h>

#include <algorithm>

namespace tessaro {

DSPMultiPassAnalyzer::DSPMultiPassAnalyzer(int inNumPasses) : mNumPasses(std::max(inNumPasses, 1)) {}

DSPMultiPassAnalyzer::~DSPMultiPassAnalyzer() = default;

bool DSPMultiPassAnalyzer::SetSelection(std::int64_t inStart, std::int64_t inLength)
{
    mSelectionStart = inStart;
    mSelectionLength = inLength;
    mCurrentPosition = inStart;
    return true;
}

int DSPMultiPassAnalyzer::GetLatency() const
{
    return GetLatency(std::min(mCurrentPass, mNumPasses - 1));
}

int DSPMultiPassAnalyzer::GetLatency(int) const
{
    return 0;
}

std::int64_t DSPMultiPassAnalyzer::GetPassLength() const
{
    return mSelectionLength + GetLatency();
}

/// Looks at the distance and not at the end, which an open selection may have beyond the largest position.
bool DSPMultiPassAnalyzer::HasReachedEnd() const
{
    return mCurrentPosition - mSelectionStart >= GetPassLength();
}

void DSPMultiPassAnalyzer::Start(float* inResult)
{
    DSPAnalyzer::Start(inResult);
    mCurrentPass = 0;
}

std::int64_t DSPMultiPassAnalyzer::Analyze(const float* const* inInput, int inNumChannels, int inNumSamples)
{
    const std::int64_t consumed = Analyze(mCurrentPass, inInput, inNumChannels, inNumSamples);
    mCurrentPosition += consumed;
    // Callers of old expect this difference on the last block of a pass.
    return HasReachedEnd() ? consumed - GetPassLength() : consumed;
}

bool DSPMultiPassAnalyzer::IsCompleted() const
{
    if (mCurrentPass >= mNumPasses || !HasReachedEnd()) {
        return false;
    }
    // The query that callers make after each block is also what turns the page, so it is const to them only.
    const_cast<DSPMultiPassAnalyzer*>(this)->OnPassDone(mCurrentPass);
    ++mCurrentPass;
    mCurrentPosition = mSelectionStart;
    return mCurrentPass == mNumPasses;
}

float DSPMultiPassAnalyzer::GetProgress() const
{
    const auto passLength = static_cast<float>(GetPassLength());
    if (passLength <= 0.0f) {
        return 100.0f;
    }
    const float share = 1.0f / static_cast<float>(mNumPasses);
    const float done = static_cast<float>(mCurrentPosition - mSelectionStart) / passLength;
    return (done * share + static_cast<float>(mCurrentPass) * share) * 100.0f;
}

void DSPMultiPassAnalyzer::OnPassDone(int) {}

} // namespace tessaro
