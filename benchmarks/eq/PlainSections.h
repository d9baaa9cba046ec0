#pragma once

#include <brisken/filter/SectionCascade.h>

/// What the cascade is compared with, compiled for the machine at hand.
namespace plain {

using brisken::filter::SectionMemory;
using brisken::filter::SectionTaps;

/// One section after the other over one row
void RunSections(unsigned inCount, double* ioRow, unsigned inNumSections, const SectionTaps* inTaps,
                 SectionMemory* ioMemories);

/// One section after the other over two rows, which share a vector of two. Taps and memories of the second
/// row lie behind those of the first.
void RunSectionsOnPair(unsigned inCount, double* const* ioRows, unsigned inNumSections,
                       const SectionTaps* inTaps, SectionMemory* ioMemories);

} // namespace plain
