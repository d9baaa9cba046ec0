#pragma once

#include <cstddef>

#include <brisken/Export.h>

/// Sums of products of four coefficient rows at a time with many stretches of one signal: the inner loop of
/// polyphase filters, in which each row meets the signal again and again, further on each time.
///
/// Rows and stretches are loaded once for several sums, which is up to three times as fast as a `DotProduct`
/// for each: with three stretches and more for vectors of 64 bytes, with two for shorter ones.
namespace brisken::filter {

/// Rows of a bank
constexpr unsigned kRowBankRows = 4;
/// The rows of a bank take turns by blocks of this many elements; their length is a multiple of it.
constexpr unsigned kRowBankBlock = 8;

/// Where element `inElement` of row `inRow` stands in a bank.
constexpr std::size_t GetRowBankIndex(unsigned inRow, unsigned inElement)
{
    return std::size_t{inElement / kRowBankBlock * kRowBankRows + inRow} * kRowBankBlock +
           inElement % kRowBankBlock;
}

/// `outSums[4 * s + r]` = sum over the elements of row r times those of `inSignal` from `s * inHop` on.
///
/// `inRowLength` is a multiple of `kRowBankBlock`. Banks are fastest at multiples of 64 bytes; the signal is
/// at any address. A NaN or infinity in the signal goes into the sums of all four rows. Each sum is the same
/// to the last bit however stretches are put into calls; between targets its last bits differ. [real-time]
/// [any thread]
BRISKEN_EXPORT void RowBankSums(const double* inBank, unsigned inRowLength, const double* inSignal,
                                unsigned inHop, unsigned inNumStretches, double* outSums);

} // namespace brisken::filter
