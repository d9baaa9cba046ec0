#include <tessaro/filters/DeskFilter.h>

#include <utility>

#include <tessaro/filters/EqualizerSections.h>

namespace tessaro {

fDeskFilter::fDeskFilter()
{
    MakeSection<fPARA>();
}

fDeskFilter::fDeskFilter(const fDeskFilter& inOther)
    : mSection(inOther.mSection ? inOther.mCopySection(*inOther.mSection) : nullptr),
      mCopySection(inOther.mCopySection),
      mKind(inOther.mKind)
{
}

fDeskFilter& fDeskFilter::operator=(const fDeskFilter& inOther)
{
    return *this = fDeskFilter(inOther);
}

void fDeskFilter::setType(eFilterKindType inKind)
{
    ShiftGears(inKind, isDoublePrecision(), true);
}

void fDeskFilter::setDoublePrecision(bool inDoublePrecision)
{
    ShiftGears(mKind, inDoublePrecision, true);
}

void fDeskFilter::ShiftGears(eFilterKindType inKind, bool inDoublePrecision, bool inFirstOrder)
{
    if (inKind == mKind && inDoublePrecision == isDoublePrecision() && inFirstOrder == isFirstOrder()) {
        return;
    }
    const auto old = std::move(mSection);
    MakeSection(inKind, inDoublePrecision, inFirstOrder);
    mKind = inKind;
    if (mSection == nullptr) {
        return;
    }
    mSection->setEnable(old->isEnabled());
    // Ahead of the design, and thus counted at the sample rate of a new section.
    mSection->setSmoothingTime(old->getSmoothingTime());
    mSection->setStateVariable(old->isStateVariable());
    mSection->mSpare1 = old->mSpare1;
    mSection->mSpare2 = old->mSpare2;
    mSection->Setup(old->mSampleRate, old->mFrequency, old->mGain, old->mFrequency / old->mBandwidth,
                    old->mSpare1, old->mSpare2);
}

template <typename Section>
void fDeskFilter::MakeSection()
{
    mSection = std::make_unique<Section>();
    mCopySection = [](const FilterSection& inSection) -> std::unique_ptr<FilterSection> {
        return std::make_unique<Section>(static_cast<const Section&>(inSection));
    };
}

void fDeskFilter::MakeSection(eFilterKindType inKind, bool inDoublePrecision, bool inFirstOrder)
{
    switch (inKind) {
    case kNotch:
        inDoublePrecision ? MakeSection<dNotch>() : MakeSection<fNotch>();
        break;
    case kHighShelf:
        if (inFirstOrder) {
            inDoublePrecision ? MakeSection<dHISHELVE>() : MakeSection<fHISHELVE>();
        } else {
            inDoublePrecision ? MakeSection<dHISHELVE2>() : MakeSection<fHISHELVE2>();
        }
        break;
    case kLowShelf:
        if (inFirstOrder) {
            inDoublePrecision ? MakeSection<dLOSHELVE>() : MakeSection<fLOSHELVE>();
        } else {
            inDoublePrecision ? MakeSection<dLOSHELVE2>() : MakeSection<fLOSHELVE2>();
        }
        break;
    case kParametric:
        inDoublePrecision ? MakeSection<dPARA>() : MakeSection<fPARA>();
        break;
    }
}

} // namespace tessaro
