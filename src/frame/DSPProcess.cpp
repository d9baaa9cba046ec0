#include <tessaro/frame/DSPProcess.h>

namespace tessaro {

DSPProcess::~DSPProcess() = default;

bool DSPProcess::SetSelection(std::int64_t, std::int64_t)
{
    return true;
}

void DSPProcess::SetIOConfig(int, float) {}

void DSPProcess::Start() {}

int DSPProcess::Flush(float* const*, int, int)
{
    return 0;
}

void DSPProcess::Done() {}

int DSPProcess::GetLatency() const
{
    return 0;
}

void DSPProcess::ParameterChanged() {}

} // namespace tessaro
