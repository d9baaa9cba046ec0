#include "play/ChainControl.h"

#include <algorithm>
#include <utility>

namespace host {

using tessaro::messaging::RealtimeMessage;

/// Goes to the playing thread with a new chain, waits there for its turn, and comes back with the old one.
class ChainControl::SwitchMessage : public RealtimeMessage
{
public:
    SwitchMessage(ChainControl& ioControl, std::unique_ptr<EffectChain> inNext)
        : mControl(ioControl), mTurn(ioControl.mPosted), mNext(std::move(inNext))
    {
    }

    Result ExecuteOnRealtimeThread() override
    {
        // Messages overtake each other on their rounds between the threads; the turn keeps their order.
        if (mTurn == mControl.mTurn) {
            if (mNext != nullptr) {
                mControl.mPlayed.Begin(std::move(mNext));
            } else if ((mOld = mControl.mPlayed.TakeOld()) != nullptr) {
                ++mControl.mTurn;
            }
        }
        return kNotDone;
    }

    Result ExecuteOnControlThread() override
    {
        if (mOld == nullptr) {
            return kNotDone;
        }
        mOld.reset();
        ++mControl.mDone;
        return kDone;
    }

private:
    ChainControl& mControl;
    int mTurn;
    std::unique_ptr<EffectChain> mNext;
    std::unique_ptr<EffectChain> mOld;
};

ChainControl::ChainControl(const ChainDescription& inChain, const StreamFormat& inFormat,
                           tessaro::messaging::RealtimeMessageQueueControlInterface& ioQueue,
                           ChainCrossfade& ioPlayed)
    : mChain(inChain), mFormat(inFormat), mQueue(ioQueue), mPlayed(ioPlayed)
{
}

void ChainControl::Post(const ControlEvent& inEvent)
{
    auto changed = Change(inEvent);
    const bool isBypassed =
        inEvent.mAction == ControlEvent::Action::kMode ? inEvent.mText == kModeBypass : mIsBypassed;
    auto chain =
        std::make_unique<EffectChain>(isBypassed ? ChainDescription{changed.mSource, {}} : changed, mFormat);
    mChain = std::move(changed);
    mIsBypassed = isBypassed;
    mQueue.Post(boost::intrusive_ptr<RealtimeMessage>(new SwitchMessage(*this, std::move(chain))));
    ++mPosted;
}

ChainDescription ChainControl::Change(const ControlEvent& inEvent) const
{
    ChainDescription changed = mChain;
    changed.mSource = ChainSource::File(inEvent.mPlace);
    auto& effects = changed.mEffects;
    const bool isInsert = inEvent.mAction == ControlEvent::Action::kInsert;
    if (inEvent.mPosition > effects.size() + (isInsert ? 1 : 0)) {
        changed.mSource.Fail("the chain has no position " + std::to_string(inEvent.mPosition) +
                             "; its length is " + std::to_string(effects.size()));
    }
    const auto place =
        effects.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(inEvent.mPosition, 1)) - 1;
    switch (inEvent.mAction) {
    case ControlEvent::Action::kSet:
        *place = ChangeParameters(changed.mSource, *place, inEvent.mText);
        break;
    case ControlEvent::Action::kInsert:
        effects.insert(place, ParseEffect(changed.mSource, inEvent.mText));
        break;
    case ControlEvent::Action::kRemove:
        effects.erase(place);
        break;
    case ControlEvent::Action::kMode:
        break;
    }
    return changed;
}

std::string ChainControl::Describe() const
{
    return FormatChain(mChain) + (mIsBypassed ? " (bypassed)" : "");
}

} // namespace host
