#include <tessaro/dynamics/IRCLimiter.h>

#include <gtest/gtest.h>

#include "contract/Contract.h"
#include "contract/Subjects.h"

namespace tessaro::contract {

namespace {

TEST(IRCLimiterContract, KeepsAllPromises)
{
    for (const int kind : {0, 1, 2, 3}) {
        const bool isDouble = kind % 2 == 1;
        const bool isAnalog = kind / 2 == 1;
        SCOPED_TRACE(::testing::Message() << "double envelope " << isDouble << ", analog " << isAnalog);
        ContractTerms terms;
        terms.mCreate = [=] {
            boost::intrusive_ptr<IRCLimiter> limiter(new IRCLimiter);
            limiter->SetThreshold(-12.0f);
            limiter->SetBehavior(isDouble ? 0.5f : 1.2f);
            limiter->SetStereoLinking(isAnalog ? 100.0f : 40.0f);
            limiter->EnableDoubleEnvelope(isDouble);
            limiter->EnableAnalogDetection(isAnalog);
            return std::make_unique<AudioProcessorSubject>(limiter);
        };
        terms.mHasSilenceFlags = false;                       // its flags skip channels
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
        terms.mMaxBlock = 600;                                // longer than what is processed at a time
        terms.mFormats = {{1, 48000}, {2, 44100}, {3, 8000}, {4, 192000}};
        terms.mStreamLength = 9000;
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
