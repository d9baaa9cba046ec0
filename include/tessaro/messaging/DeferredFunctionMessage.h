#pragma once

#include <boost/function.hpp>

#include <tessaro/Export.h>
#include <tessaro/messaging/RealtimeMessage.h>

namespace tessaro::messaging {

/// Calls a function on the real-time thread, and is done. What the function holds is freed with the message,
/// on the control thread.
class TESSARO_EXPORT DeferredFunctionMessage : public RealtimeMessage
{
public:
    /// Copies the function, which may be empty. [control]
    explicit DeferredFunctionMessage(const boost::function<void()>& inFunction);
    ~DeferredFunctionMessage() override;

    /// Throws `boost::bad_function_call` if the function is empty, and what the function throws. Keeps the
    /// rules of a real-time thread as far as the function does. [real-time]
    Result ExecuteOnRealtimeThread() override;

private:
    boost::function<void()> mFunction;
};

} // namespace tessaro::messaging
