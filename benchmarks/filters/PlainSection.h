#pragma once

namespace tessaro::plain {

/// The loop that anyone would write, compiled for this very machine.
struct Section
{
    double b0, b1, b2, a1, a2;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
};

void RunSection(Section& ioSection, float* ioRow, int inCount);

} // namespace tessaro::plain
