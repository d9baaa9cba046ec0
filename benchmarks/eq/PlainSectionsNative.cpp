#include "PlainSections.h"

namespace plain {

void RunSections(unsigned inCount, double* ioRow, unsigned inNumSections, const SectionTaps* inTaps,
                 SectionMemory* ioMemories)
{
    for (unsigned section = 0; section < inNumSections; ++section) {
        const SectionTaps t = inTaps[section];
        SectionMemory m = ioMemories[section];
        for (unsigned i = 0; i < inCount; ++i) {
            const double x = ioRow[i];
            const double y = t.b0 * x + t.b1 * m.x1 + t.b2 * m.x2 - (t.a1 * m.y1 + t.a2 * m.y2);
            m = {x, m.x1, y, m.y1};
            ioRow[i] = y;
        }
        ioMemories[section] = m;
    }
}

void RunSectionsOnPair(unsigned inCount, double* const* ioRows, unsigned inNumSections,
                       const SectionTaps* inTaps, SectionMemory* ioMemories)
{
    using Pair = double __attribute__((vector_size(16)));
    for (unsigned section = 0; section < inNumSections; ++section) {
        const SectionTaps t = inTaps[section], u = inTaps[inNumSections + section];
        SectionMemory &left = ioMemories[section], &right = ioMemories[inNumSections + section];
        const Pair b0{t.b0, u.b0}, b1{t.b1, u.b1}, b2{t.b2, u.b2}, a1{t.a1, u.a1}, a2{t.a2, u.a2};
        Pair x1{left.x1, right.x1}, x2{left.x2, right.x2}, y1{left.y1, right.y1}, y2{left.y2, right.y2};
        for (unsigned i = 0; i < inCount; ++i) {
            const Pair x{ioRows[0][i], ioRows[1][i]};
            const Pair y = b0 * x + b1 * x1 + b2 * x2 - a2 * y2 - a1 * y1;
            x2 = x1;
            x1 = x;
            y2 = y1;
            y1 = y;
            ioRows[0][i] = y[0];
            ioRows[1][i] = y[1];
        }
        left = {x1[0], x2[0], y1[0], y2[0]};
        right = {x1[1], x2[1], y1[1], y2[1]};
    }
}

} // namespace plain
