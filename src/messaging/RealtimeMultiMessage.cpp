#include <tessaro/messaging/RealtimeMultiMessage.h>

#include <utility>

namespace tessaro::messaging {

RealtimeMultiMessage::RealtimeMultiMessage() = default;

RealtimeMultiMessage::~RealtimeMultiMessage() = default;

void RealtimeMultiMessage::AddMessage(boost::intrusive_ptr<RealtimeMessage> inMessage)
{
    if (inMessage) {
        mEntries.push_back({std::move(inMessage), kNotDone});
    }
}

bool RealtimeMultiMessage::Empty() const
{
    return mEntries.empty();
}

RealtimeMessage::Result RealtimeMultiMessage::ExecuteOnPost()
{
    for (Entry& entry : mEntries) {
        entry.mResult = kNotDone;
    }
    return ExecuteUnfinished(&RealtimeMessage::ExecuteOnPost);
}

RealtimeMessage::Result RealtimeMultiMessage::ExecuteOnRealtimeThread()
{
    return ExecuteUnfinished(&RealtimeMessage::ExecuteOnRealtimeThread);
}

RealtimeMessage::Result RealtimeMultiMessage::ExecuteOnControlThread()
{
    return ExecuteUnfinished(&RealtimeMessage::ExecuteOnControlThread);
}

RealtimeMessage::Result RealtimeMultiMessage::ExecuteUnfinished(Result (RealtimeMessage::*inStep)())
{
    Result result = kDone;
    for (Entry& entry : mEntries) {
        if (entry.mResult != kDone) {
            entry.mResult = ((*entry.mMessage).*inStep)();
        }
        if (entry.mResult != kDone) {
            result = kNotDone;
        }
    }
    return result;
}

} // namespace tessaro::messaging
