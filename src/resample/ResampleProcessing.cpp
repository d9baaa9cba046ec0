#include <tessaro/resample/Resample.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <brisken/Utility.h>
#include <brisken/filter/RowBank.h>

#include "CoeffTableStore.h"
#include "SampleHistory.h"

namespace tessaro {

namespace {

constexpr int kBankRows = brisken::filter::kRowBankRows;

int CeilOfQuotient(std::int64_t inDividend, std::int64_t inDivisor)
{
    return static_cast<int>((inDividend + inDivisor - 1) / inDivisor);
}

float Narrow(double inSample)
{
    return static_cast<float>(inSample);
}

/// Outputs of a cycle from `mFirst` to before `mEnd`, in banks: all rounds of a bank while it is at hand.
class BankRun
{
public:
    /// `inStart` is where the window of the cycle's output 0 would be, from `inWindow` on.
    BankRun(const CoeffTableStore& inTable, const double* inWindow, std::int64_t inStart, int inFirst,
            int inEnd, float* outOutput)
        : mTable(inTable),
          mCycle(inTable.GetCycle()),
          mWindow(inWindow),
          mStart(inStart),
          mFirst(inFirst),
          mEnd(inEnd),
          mOutput(outOutput)
    {
    }

    /// From the bank of the first output on, once through the cycle
    void Compute() const
    {
        const int banks = mCycle.GetNumBanks();
        const int firstBank = mFirst / kBankRows;
        for (int bank = firstBank; bank < banks && bank * kBankRows < mEnd; ++bank) {
            ComputeBank(bank, 0);
        }
        for (int bank = 0; bank < firstBank && mCycle.mLength + bank * kBankRows < mEnd; ++bank) {
            ComputeBank(bank, 1);
        }
    }

private:
    static constexpr int kMostRounds = 16;

    void ComputeBank(int inBank, int inFirstRound) const
    {
        const int rounds = CeilOfQuotient(mEnd - inBank * kBankRows, mCycle.mLength);
        double sums[kMostRounds * kBankRows];
        for (int round = inFirstRound; round < rounds; round += kMostRounds) {
            const int count = std::min(kMostRounds, rounds - round);
            const auto start = mStart + mCycle.mBankOffsets[static_cast<std::size_t>(inBank)] +
                               static_cast<std::int64_t>(round) * mCycle.mAdvance;
            brisken::filter::RowBankSums(mTable.GetBank(inBank), static_cast<unsigned>(mCycle.mRowLength),
                                         mWindow + start, static_cast<unsigned>(mCycle.mAdvance),
                                         static_cast<unsigned>(count), sums);
            for (int i = 0; i < count; ++i) {
                Write(inBank, round + i, sums + i * kBankRows);
            }
        }
    }

    /// Of a bank's sums, those that are of outputs that were asked for.
    void Write(int inBank, int inRound, const double* inSums) const
    {
        const int rows = std::min(kBankRows, mCycle.mLength - inBank * kBankRows);
        const int index = inRound * mCycle.mLength + inBank * kBankRows;
        const int begin = std::max(mFirst - index, 0);
        const int end = std::min(rows, mEnd - index);
        if (begin == 0 && end == kBankRows) { // the common case, in one vector
            std::transform(inSums, inSums + kBankRows, mOutput + (index - mFirst), Narrow);
        } else if (begin < end) {
            std::transform(inSums + begin, inSums + end, mOutput + (index + begin - mFirst), Narrow);
        }
    }

    const CoeffTableStore& mTable;
    const CoeffTableStore::Cycle& mCycle;
    const double* mWindow;
    std::int64_t mStart;
    int mFirst;
    int mEnd;
    float* mOutput;
};

} // namespace

int Resample::Process(const float* inInput, float* outOutput, int inCount)
{
    if (inCount <= 0 || inInput == nullptr || outOutput == nullptr) {
        return 0;
    }
    if (!IsReady()) {
        return PassThrough(inInput, outOutput, inCount);
    }
    int consumed = 0;
    int produced = 0;
    while (consumed < inCount) {
        const int ahead = mHistory->GetNumAhead();
        const int steps = std::min(inCount - consumed + ahead, SampleHistory::kMostSteps);
        consumed += Feed(inInput + consumed, steps);
        produced += Generate(outOutput + produced, steps, std::numeric_limits<int>::max());
        MoveOn(steps);
    }
    return produced;
}

int Resample::Process2(const float* inInput, float* outOutput, int inCount)
{
    if (inCount <= 0 || inInput == nullptr || outOutput == nullptr) {
        return 0;
    }
    if (!IsReady()) {
        return PassThrough(inInput, outOutput, inCount);
    }
    int consumed = 0;
    int produced = 0;
    while (produced < inCount) {
        const int steps = CountStepsFor(inCount - produced);
        consumed += Feed(inInput + consumed, steps);
        produced += Generate(outOutput + produced, steps, inCount - produced);
        // The sample of the last output stays current as long as outputs are due from it.
        MoveOn(static_cast<int>(std::min<std::int64_t>(mDue, steps)));
    }
    // The sample behind, if the next output waits for it or a later one, is taken already.
    return consumed + Feed(inInput + consumed, 1);
}

/// Gets ready if need be. False if there is nothing to convert.
bool Resample::IsReady()
{
    if (!mInitialized) {
        Initialize();
    }
    return mInitialized != 0 && !IsCopy();
}

/// Equal rates copy; without rates nothing comes out.
int Resample::PassThrough(const float* inInput, float* outOutput, int inCount) const
{
    const int count = IsCopy() ? inCount : 0;
    brisken::utility::Copy(static_cast<unsigned>(count), inInput, outOutput);
    return count;
}

/// Makes `inSteps` samples stand ahead, and returns how many of them were taken from the input.
int Resample::Feed(const float* inInput, int inSteps)
{
    const int count = std::max(inSteps - mHistory->GetNumAhead(), 0);
    mHistory->MakeRoom(inSteps);
    mHistory->Append(inInput, count);
    return count;
}

void Resample::MoveOn(int inSteps)
{
    mHistory->Advance(inSteps);
    mDue -= inSteps;
    mWriteIndex = (mWriteIndex + inSteps) % mSettings.mOrder;
}

/// How far the window moves for so many outputs, its first place included; as far as it may at once.
int Resample::CountStepsFor(int inOutputs) const
{
    double phase = mPhase;
    auto due = mDue;
    if (!mTable->IsPlain() && IsPhaseOnGrid()) {
        const auto& cycle = mTable->GetCycle();
        const auto first = cycle.GetIndex(static_cast<int>(phase));
        due += cycle.GetOffset(first + inOutputs - 1) - cycle.GetOffset(first);
        inOutputs = 1;
    }
    for (int i = 1; i < inOutputs && due < SampleHistory::kMostSteps; ++i) {
        StepToNextOutput(phase, due);
    }
    return static_cast<int>(std::min<std::int64_t>(due + 1, SampleHistory::kMostSteps));
}

/// Computes the outputs that are due within the next `inSteps` places of the window.
int Resample::Generate(float* outOutput, int inSteps, int inMostOutputs)
{
    if (mTable->IsPlain() || !mHistory->IsFinite()) {
        return GenerateSingly(outOutput, inSteps, inMostOutputs, false);
    }
    const int singles = GenerateSingly(outOutput, inSteps, inMostOutputs, true);
    return singles + GenerateInBanks(outOutput + singles, inSteps, inMostOutputs - singles);
}

int Resample::GenerateSingly(float* outOutput, int inSteps, int inMostOutputs, bool inUntilOnGrid)
{
    int produced = 0;
    while (produced < inMostOutputs && mDue < inSteps && !(inUntilOnGrid && IsPhaseOnGrid())) {
        const double output = mTable->IsPlain() ? ComputeFromPlainRows() : ComputeFromBank();
        outOutput[produced++] = static_cast<float>(output);
        StepToNextOutput(mPhase, mDue);
    }
    return produced;
}

/// From here on steps add up without rounding, so that the rows come in the cycle's order for good.
bool Resample::IsPhaseOnGrid() const
{
    const auto highest = static_cast<double>(mSettings.mTableCount - 1) + mSettings.mStep;
    const double steps = std::ldexp(mPhase, std::numeric_limits<double>::digits - 1 - std::ilogb(highest));
    return steps == std::trunc(steps);
}

int Resample::GenerateInBanks(float* outOutput, int inSteps, int inMostOutputs)
{
    if (inMostOutputs <= 0 || mDue >= inSteps) {
        return 0;
    }
    const auto& cycle = mTable->GetCycle();
    const int row = static_cast<int>(mPhase);
    const auto first = cycle.GetIndex(row);
    const auto start = mDue - cycle.GetOffset(first);
    const auto due = static_cast<std::int64_t>(
        CeilOfQuotient((inSteps - start) * cycle.mNumRows, cycle.mStep)); // outputs up to there
    const auto end = std::min(due, first + inMostOutputs);
    BankRun(*mTable, mHistory->GetWindow(), start, static_cast<int>(first), static_cast<int>(end), outOutput)
        .Compute();
    mDue = start + cycle.GetOffset(end);
    mPhase += static_cast<double>(end * cycle.mStep % cycle.mNumRows - row);
    return static_cast<int>(end - first);
}

/// The rows are whole, so that quotient and remainder of the position by them come out by subtraction, and
/// exactly.
void Resample::StepToNextOutput(double& ioPhase, std::int64_t& ioDue) const
{
    const double rows = mSettings.mTableCount;
    const double wholeSteps = std::floor(mSettings.mStep / rows);
    double position = ioPhase + mSettings.mStep - wholeSteps * rows;
    ioDue += static_cast<std::int64_t>(wholeSteps);
    while (position >= rows) {
        position -= rows;
        ++ioDue;
    }
    ioPhase = position;
}

double Resample::ComputeFromPlainRows() const
{
    const auto order = static_cast<unsigned>(mSettings.mOrder);
    const double* window = mHistory->GetWindow() + mDue;
    const int row = static_cast<int>(mPhase);
    const double output = brisken::utility::DotProduct(order, mTable->GetRow(row), window);
    if (mSettings.mTableCount != kMostTableRows) {
        return output;
    }
    const double next = row + 1 < kMostTableRows
                            ? brisken::utility::DotProduct(order, mTable->GetRow(row + 1), window)
                            : ComputeBehindLastRow(window);
    const double weight = mPhase - row;
    return next * weight + (1.0 - weight) * output;
}

/// The first row, one sample on. That sample is not there yet: in its place the oldest one of the window
/// counts, or nothing each time that the window has moved on by its own length.
double Resample::ComputeBehindLastRow(const double* inWindow) const
{
    const int last = mSettings.mOrder - 1;
    const double* taps = mTable->GetRow(0);
    const bool isRoundEnd = (mWriteIndex + mDue) % mSettings.mOrder == last;
    return brisken::utility::DotProduct(static_cast<unsigned>(last), taps, inWindow + 1) +
           taps[last] * (isRoundEnd ? 0.0 : inWindow[0]);
}

/// The same as by banks. Where there are NaNs and infinities, zeros of rows must not meet them.
double Resample::ComputeFromBank() const
{
    const auto& cycle = mTable->GetCycle();
    const int index = static_cast<int>(cycle.GetIndex(static_cast<int>(mPhase)));
    if (!mHistory->IsFinite()) {
        return mTable->SumTaps(index, mHistory->GetWindow() + mDue);
    }
    const int bank = index / kBankRows;
    double sums[kBankRows];
    brisken::filter::RowBankSums(mTable->GetBank(bank), static_cast<unsigned>(cycle.mRowLength),
                                 mHistory->GetWindow() + mDue - mTable->GetNumZeros(index), 0, 1, sums);
    return sums[index % kBankRows];
}

} // namespace tessaro
