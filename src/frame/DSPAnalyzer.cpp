#include <tessaro/frame/DSPAnalyzer.h>

namespace tessaro {

DSPAnalyzer::~DSPAnalyzer() = default;

void DSPAnalyzer::SetIOConfig(int, float) {}

bool DSPAnalyzer::SetSelection(std::int64_t, std::int64_t)
{
    return true;
}

int DSPAnalyzer::GetLatency() const
{
    return 0;
}

void DSPAnalyzer::Start(float* inResult)
{
    mResult = inResult;
}

void DSPAnalyzer::Done() {}

} // namespace tessaro
