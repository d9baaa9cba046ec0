#include <tessaro/utility/PhaseUnwrap.h>

namespace tessaro::utils {

namespace {

constexpr float kHalfTurn = 3.1414928f; // below pi on purpose: -pi becomes pi, whatever its rounding
constexpr float kTurn = 6.2831855f;
constexpr int kMaxCorrections = 15;

} // namespace

void UnwrapPhase(unsigned inCount, float* ioPhase)
{
    float offset = 0.0f;
    float previous = 0.0f;
    for (unsigned i = 0; i < inCount; ++i) {
        float step = ioPhase[i] + offset - previous;
        int corrections = 0;
        for (; step > kHalfTurn && corrections < kMaxCorrections; ++corrections) {
            step -= kTurn;
            offset -= kTurn;
        }
        for (; step < -kHalfTurn && corrections < kMaxCorrections; ++corrections) {
            step += kTurn;
            offset += kTurn;
        }
        previous = ioPhase[i] + offset;
        ioPhase[i] = previous;
    }
}

} // namespace tessaro::utils
