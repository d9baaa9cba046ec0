#pragma once

#include <optional>
#include <vector>

#include "chain/Parameter.h"
#include "effects/Effect.h"

namespace host {

/// An effect over one processor for all channels which knows nothing of silence: silent rows reach it as
/// zeros, and rows that come out as zeros are flagged.
class LinkedEffect : public Effect
{
public:
    void SetParameters(const ParameterValues& inValues) override { mValues = inValues; }

    /// Makes the processor.
    void Configure(const StreamFormat& inFormat) final;

    SilentChannels Process(const float* const* inInput, float* const* outOutput, unsigned inCount,
                           SilentChannels inSilent) final;

    /// Makes the processor anew, so that nothing at all stays of what was heard.
    void Reset() final { MakeProcessor(mFormat, *mValues); }

protected:
    virtual void MakeProcessor(const StreamFormat& inFormat, const ParameterValues& inValues) = 0;
    virtual void ProcessRows(const float* const* inInput, float* const* outOutput, unsigned inCount) = 0;

private:
    std::optional<ParameterValues> mValues;
    StreamFormat mFormat;
    std::vector<float> mZeros;
    std::vector<const float*> mRows;
};

} // namespace host
