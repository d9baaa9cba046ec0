#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <tessaro/messaging/RealtimeMessage.h>

namespace tessaro::testing {

/// What happened, in order: one word a step, the message's name and "p", "r" or "c" for post, real-time and
/// control, "x" for its end.
using Log = std::vector<std::string>;

/// A message that writes down its steps and answers as a script says: '.' not done, '!' done, 'T' throw. When
/// the script of a thread is used up its last letter holds.
class ScriptedMessage : public messaging::RealtimeMessage
{
public:
    ScriptedMessage(std::string inName, Log& ioLog, std::string inRealtime, std::string inControl = "!",
                    std::string inPost = ".")
        : mName(std::move(inName)),
          mLog(ioLog),
          mPost(std::move(inPost)),
          mRealtime(std::move(inRealtime)),
          mControl(std::move(inControl))
    {
    }
    ~ScriptedMessage() override { mLog.push_back(mName + "x"); }

    Result ExecuteOnPost() override { return Answer("p", mPost, mPostCount); }
    Result ExecuteOnRealtimeThread() override { return Answer("r", mRealtime, mRealtimeCount); }
    Result ExecuteOnControlThread() override { return Answer("c", mControl, mControlCount); }

private:
    Result Answer(const char* inStep, const std::string& inScript, std::size_t& ioCount)
    {
        mLog.push_back(mName + inStep);
        const char answer = inScript[std::min(ioCount++, inScript.size() - 1)];
        if (answer == 'T') {
            throw std::runtime_error(mName + inStep);
        }
        return answer == '!' ? kDone : kNotDone;
    }

    std::string mName;
    Log& mLog;
    std::string mPost;
    std::string mRealtime;
    std::string mControl;
    std::size_t mPostCount = 0;
    std::size_t mRealtimeCount = 0;
    std::size_t mControlCount = 0;
};

template <class... Arguments>
boost::intrusive_ptr<messaging::RealtimeMessage> Scripted(Arguments&&... inArguments)
{
    return boost::intrusive_ptr<messaging::RealtimeMessage>(
        new ScriptedMessage(std::forward<Arguments>(inArguments)...));
}

} // namespace tessaro::testing
