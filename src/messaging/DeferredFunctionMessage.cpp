#include <tessaro/messaging/DeferredFunctionMessage.h>

namespace tessaro::messaging {

DeferredFunctionMessage::DeferredFunctionMessage(const boost::function<void()>& inFunction)
    : mFunction(inFunction)
{
}

DeferredFunctionMessage::~DeferredFunctionMessage() = default;

RealtimeMessage::Result DeferredFunctionMessage::ExecuteOnRealtimeThread()
{
    mFunction();
    return kDone;
}

} // namespace tessaro::messaging
