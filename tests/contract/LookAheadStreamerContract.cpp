#include "utility/LookAheadStreamer.h"

#include <gtest/gtest.h>

#include "contract/Subjects.h"
#include "support/PeakAhead.h"

namespace tessaro::contract {

namespace {

/// A streamer that keeps what it wraps.
class StreamedPeakAhead : public LookAheadStreamer
{
public:
    explicit StreamedPeakAhead(boost::intrusive_ptr<testing::PeakAhead> inWrapped)
        : LookAheadStreamer(*inWrapped), mWrapped(std::move(inWrapped))
    {
    }

private:
    boost::intrusive_ptr<testing::PeakAhead> mWrapped;
};

TEST(LookAheadStreamerContract, KeepsAllPromises)
{
    for (const int lookAhead : {0, 20, 100}) { // none, shorter and longer than a block
        SCOPED_TRACE(lookAhead);
        ContractTerms terms;
        terms.mCreate = [lookAhead] {
            const boost::intrusive_ptr wrapped(new testing::PeakAhead(lookAhead));
            return std::make_unique<AudioProcessorSubject>(new StreamedPeakAhead(wrapped));
        };
        terms.mMaxBlock = 64;
        terms.mGrowth = ContractTerms::Growth::kKeepsHistory;
        ExpectKeepsContract(terms);
    }
}

} // namespace

} // namespace tessaro::contract
