#include <tessaro/dynamics/SimpleIRCLimiter.h>

#include <gtest/gtest.h>

#include "contract/Subjects.h"
#include "utility/LookAheadStreamer.h"

namespace tessaro::contract {

namespace {

/// The limiter in a plain stream
class StreamedLimiter : public LookAheadStreamer
{
public:
    explicit StreamedLimiter(boost::intrusive_ptr<SimpleIRCLimiter> inLimiter)
        : LookAheadStreamer(*inLimiter), mLimiter(std::move(inLimiter))
    {
    }

private:
    boost::intrusive_ptr<SimpleIRCLimiter> mLimiter;
};

TEST(SimpleIRCLimiterContract, KeepsAllPromises)
{
    for (const float behavior : {0.0f, 0.15f, 0.6f, 1.5f}) {
        SCOPED_TRACE(behavior);
        ContractTerms terms;
        terms.mCreate = [behavior] {
            const boost::intrusive_ptr limiter(new SimpleIRCLimiter);
            limiter->SetBehavior(behavior);
            limiter->SetThreshold(-12.0f);
            limiter->EnableAnalogDetection(behavior > 0.3f);
            return std::make_unique<AudioProcessorSubject>(new StreamedLimiter(limiter));
        };
        terms.mHasSilenceFlags = false; // it skips silent channels
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory;
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
