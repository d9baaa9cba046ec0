#pragma once

#include <cstdint>

#include <tessaro/Export.h>
#include <tessaro/frame/DSPAnalyzer.h>

namespace tessaro {

/// An analyzer that runs the same selection several times.
///
/// Driven like a `DSPAnalyzer`, with three differences:
/// - `SetSelection` must come before each `Start`, as it is what sets the position.
/// - A pass runs `GetLatency(pass)` samples past the end of the selection.
/// - `IsCompleted` has to be called exactly once after each `Analyze`. It is what ends a pass, and it answers
///   true only once. When the pass has changed, `GetCurrentPosition` is the start of the
///   selection again, and the caller rewinds its reader to it.
///
/// What the last `Analyze` of a pass returns is not a count of samples; loop on `IsCompleted`.
class TESSARO_EXPORT DSPMultiPassAnalyzer : public DSPAnalyzer
{
public:
    /// Fewer than one pass counts as one.
    explicit DSPMultiPassAnalyzer(int inNumPasses);
    ~DSPMultiPassAnalyzer() override;

    /// Stores the selection and moves to its start. Accepts any.
    bool SetSelection(std::int64_t inStart, std::int64_t inLength) override;
    /// The latency of the current pass; behind the last pass, of the last one.
    [[nodiscard]] int GetLatency() const override;
    /// Ends the pass whose end has been reached: `OnPassDone`, next pass, position back to the start of the
    /// selection. True when that was the last pass, once.
    [[nodiscard]] bool IsCompleted() const override;
    [[nodiscard]] float GetProgress() const override;
    /// Begins the first pass, and leaves the position alone.
    void Start(float* inResult) override;
    /// Hands the block to the current pass and moves on by the count that comes back, which is returned. Once
    /// the end of the pass has been reached it is returned less the length of the pass (selection and
    /// latency).
    std::int64_t Analyze(const float* const* inInput, int inNumChannels, int inNumSamples) override;

    /// The latency of pass `inPass`, counted from 0; 0 in this form.
    [[nodiscard]] virtual int GetLatency(int inPass) const;
    /// Takes a block of pass `inPass`, and returns how many samples of it were consumed.
    virtual std::int64_t Analyze(int inPass, const float* const* inInput, int inNumChannels,
                                 int inNumSamples) = 0;
    /// Called by `IsCompleted` when pass `inPass` is through. This form does nothing.
    virtual void OnPassDone(int inPass);

    /// Where the current pass stands: the start of the selection when it has just begun. Public, because the
    /// caller rewinds its reader to it.
    [[nodiscard]] std::int64_t GetCurrentPosition() const { return mCurrentPosition; }

protected:
    [[nodiscard]] std::int64_t GetSelectionStart() const { return mSelectionStart; }
    [[nodiscard]] std::int64_t GetSelectionLength() const { return mSelectionLength; }

private:
    /// Samples that the current pass has to run
    [[nodiscard]] std::int64_t GetPassLength() const;
    [[nodiscard]] bool HasReachedEnd() const;

    std::int64_t mSelectionStart = 0;
    std::int64_t mSelectionLength = 0;
    mutable std::int64_t mCurrentPosition = 0;
    int mNumPasses;
    mutable int mCurrentPass = 0;
};

} // namespace tessaro
