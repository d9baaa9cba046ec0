#include <tessaro/messaging/PostMessageToQueueMessage.h>

#include <utility>

namespace tessaro::messaging {

PostMessageToQueueMessage::PostMessageToQueueMessage(
    boost::intrusive_ptr<RealtimeMessage>&& ioMessage,
    const boost::intrusive_ptr<RealtimeMessageQueueControlInterface>& inQueue)
    : mMessage(std::move(ioMessage)), mQueue(inQueue)
{
}

PostMessageToQueueMessage::~PostMessageToQueueMessage() = default;

RealtimeMessage::Result PostMessageToQueueMessage::ExecuteOnRealtimeThread()
{
    if (mQueue) {
        mQueue->Post(std::move(mMessage));
    }
    return kDone;
}

} // namespace tessaro::messaging
