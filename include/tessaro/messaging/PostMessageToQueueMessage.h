#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/Export.h>
#include <tessaro/messaging/RealtimeMessage.h>
#include <tessaro/messaging/RealtimeMessageQueueControlInterface.h>

namespace tessaro::messaging {

/// Moves another message over to a second queue at a safe point of the thread that runs the first: for that
/// second queue this thread is the control thread. So a change can be ordered behind what the first queue
/// still has to do, down a chain of threads.
class TESSARO_EXPORT PostMessageToQueueMessage : public RealtimeMessage
{
public:
    /// `ioMessage` is empty afterwards. With a null queue or message nothing is posted. [control]
    PostMessageToQueueMessage(boost::intrusive_ptr<RealtimeMessage>&& ioMessage,
                              const boost::intrusive_ptr<RealtimeMessageQueueControlInterface>& inQueue);
    ~PostMessageToQueueMessage() override;

    /// Posts, and is done. Exempt from the rules of a real-time thread: like every `Post` it may allocate,
    /// and delete what that queue has finished.
    Result ExecuteOnRealtimeThread() override;

private:
    boost::intrusive_ptr<RealtimeMessage> mMessage;
    boost::intrusive_ptr<RealtimeMessageQueueControlInterface> mQueue;
};

} // namespace tessaro::messaging
