#pragma once

#include <memory>
#include <string>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/messaging/RealtimeMessageQueue.h>

#include "chain/ChainDescription.h"
#include "play/ChainCrossfade.h"
#include "play/ControlFile.h"

namespace host {

/// The control side of a chain that plays: knows what the chain is, and turns events into messages that
/// change it. Each message carries a whole new chain to the playing thread and brings the old one back to be
/// freed here. All of it belongs to the control thread.
class ChainControl
{
public:
    /// `ioPlayed` is what the playing thread goes through; both it and the queue outlive the messages.
    ChainControl(const ChainDescription& inChain, const StreamFormat& inFormat,
                 tessaro::messaging::RealtimeMessageQueueControlInterface& ioQueue, ChainCrossfade& ioPlayed);

    /// Posts the change. Throws `HostError` for an effect, a parameter or a position that does not exist or a
    /// value that does not fit; the sound and the description then stay what they are.
    void Post(const ControlEvent& inEvent);

    /// The chain as it will be when all that was posted has been carried out.
    std::string Describe() const;

    int GetPostedCount() const { return mPosted; }
    /// Changes that are over, the chain before freed.
    int GetDoneCount() const { return mDone; }

private:
    class SwitchMessage;

    ChainDescription Change(const ControlEvent& inEvent) const;

    ChainDescription mChain;
    bool mIsBypassed = false;
    StreamFormat mFormat;
    tessaro::messaging::RealtimeMessageQueueControlInterface& mQueue;
    ChainCrossfade& mPlayed;
    int mPosted = 0;
    int mDone = 0;
    int mTurn = 0; ///< of the playing thread: how many changes are over for it
};

} // namespace host
