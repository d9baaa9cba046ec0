#include <tessaro/resample/ResampleInt.h>

#include <gtest/gtest.h>

#include "contract/Contract.h"
#include "contract/Subjects.h"

namespace tessaro::contract {

namespace {

TEST(ResampleIntContract, KeepsItsPromisesAtOneRate)
{
    ContractTerms terms;
    terms.mCreate = [] {
        boost::intrusive_ptr<ResampleInt> resampler(new ResampleInt);
        resampler->SetOptions(1, 1, 64, 5.0f);
        return std::make_unique<AudioProcessorSubject>(resampler);
    };
    terms.mGrowth = ContractTerms::Growth::kKeepsHistory; // there is no maximum
    terms.mExceptions = {{Promise::kSilence, "a silent channel is not touched"}};
    ExpectKeepsContract(terms);
}

} // namespace

} // namespace tessaro::contract
