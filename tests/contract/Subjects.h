#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <tessaro/frame/AudioProcessor.h>

#include "contract/Contract.h"

namespace tessaro::contract {

/// Drives any `AudioProcessor`; its latency is its system delay.
class AudioProcessorSubject : public ContractSubject
{
public:
    explicit AudioProcessorSubject(boost::intrusive_ptr<AudioProcessor> inProcessor)
        : mProcessor(std::move(inProcessor))
    {
    }

    void Configure(int inChannels, int inRate, int inMaxBlock) override
    {
        mProcessor->SetMode(inChannels, inRate, inMaxBlock);
    }
    void Process(const float* const* inInput, float* const* outOutput, int inNumSamples,
                 SilenceFlags inSilent) override
    {
        mProcessor->Process(inInput, inNumSamples, outOutput, inSilent);
    }
    void Reset() override { mProcessor->Reset(); }
    [[nodiscard]] int Latency() const override { return mProcessor->GetSystemDelay(); }

private:
    boost::intrusive_ptr<AudioProcessor> mProcessor;
};

} // namespace tessaro::contract
