#pragma once

#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/Export.h>
#include <tessaro/messaging/RealtimeMessage.h>

namespace tessaro::messaging {

/// A group of messages that travels as one, so that the real-time thread sees all their changes between the
/// same two blocks. Their steps run in the order of adding. A part that is done is not run again, while the
/// others go on in step with the group; the group is done when all its parts are. A group without parts is
/// done in every step.
///
/// Parts are filled in before the group is posted, and must not be posted themselves.
class TESSARO_EXPORT RealtimeMultiMessage : public RealtimeMessage
{
public:
    RealtimeMultiMessage();
    ~RealtimeMultiMessage() override;

    /// Adds a part; a null pointer is ignored. [control]
    void AddMessage(boost::intrusive_ptr<RealtimeMessage> inMessage);

    /// True for a group without parts. [control]
    [[nodiscard]] bool Empty() const;

    /// Every part's step, whatever its last result was. [control]
    Result ExecuteOnPost() override;

    /// The step of those parts that are not done. [real-time]
    Result ExecuteOnRealtimeThread() override;

    /// The step of those parts that are not done. [control]
    Result ExecuteOnControlThread() override;

private:
    struct Entry
    {
        boost::intrusive_ptr<RealtimeMessage> mMessage;
        Result mResult;
    };

    Result ExecuteUnfinished(Result (RealtimeMessage::*inStep)());

    std::vector<Entry> mEntries;
};

} // namespace tessaro::messaging
