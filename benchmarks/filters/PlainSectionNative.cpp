#include "PlainSection.h"

namespace tessaro::plain {

void RunSection(Section& ioSection, float* ioRow, int inCount)
{
    Section s = ioSection;
    for (int i = 0; i < inCount; ++i) {
        const double x = ioRow[i];
        const double y = s.b0 * x + s.b1 * s.x1 + s.b2 * s.x2 - s.a1 * s.y1 - s.a2 * s.y2;
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        ioRow[i] = static_cast<float>(y);
    }
    ioSection = s;
}

} // namespace tessaro::plain
