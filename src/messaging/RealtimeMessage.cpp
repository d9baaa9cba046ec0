#include <tessaro/messaging/RealtimeMessage.h>

namespace tessaro::messaging {

RealtimeMessage::~RealtimeMessage() = default;

RealtimeMessage::Result RealtimeMessage::ExecuteOnPost()
{
    return kNotDone;
}

RealtimeMessage::Result RealtimeMessage::ExecuteOnRealtimeThread()
{
    return kDone;
}

RealtimeMessage::Result RealtimeMessage::ExecuteOnControlThread()
{
    return kDone;
}

} // namespace tessaro::messaging
