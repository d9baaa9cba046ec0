#pragma once

#include <atomic>
#include <cstdint>

#include <ombrel/utility/RefCounted.h>
#include <tessaro/Export.h>

namespace tessaro::messaging {

/// A change to something that the real-time thread uses, in up to three steps: what has to be prepared when
/// it is posted, what is exchanged on the real-time thread between two blocks, and what is to be done with
/// the old things afterwards, on the control thread. Derive, override the steps that are needed, and `Post`
/// to a `RealtimeMessageQueue`.
///
///     class SetCoefficients : public RealtimeMessage
///     {
///     public:
///         // Exchanges the new ones for the old, which are freed with the message.
///         Result ExecuteOnRealtimeThread() override
///         {
///             std::swap(mFilter.mCoefficients, mCoefficients);
///             return kDone;
///         }
///         ...
///     };
///
/// Each step says with `kDone` that the message has run its course, or with `kNotDone` that the next step is
/// wanted: posting, real-time thread, control thread, real-time thread and so on, as many rounds as the
/// message asks for. By default a message wants the real-time thread, and is done after it.
///
/// Held by `boost::intrusive_ptr`. Only the control thread deletes a message, once it is finished and nobody
/// but the queue holds it; whoever keeps a reference can read the outcome at leisure. A message makes one
/// journey: it is not posted again, and not to two queues, unless it was done at posting.
class TESSARO_EXPORT RealtimeMessage : public ombrel::utility::RefCountedObject
{
public:
    enum Result
    {
        kNotDone = 0,
        kDone = 1
    };

    /// Where a message is on its journey.
    enum class State : std::int32_t
    {
        kInRing = 1,             ///< waits for the real-time thread, or is being run there
        kWaiting = 2,            ///< waits on the control side for a place in the ring; so it begins
        kWantsControlThread = 3, ///< was run on the real-time thread and has more to do on the control thread
        kFinished = 4,           ///< is kept only until nobody else holds it
        kDeletable = 5           ///< is about to be deleted
    };

    ~RealtimeMessage() override;

    /// The first step, inside `Post`. May allocate, lock and throw; an exception goes to the caller of `Post`
    /// and the message is not taken. A message that is done here never reaches the real-time thread.
    /// [control]
    virtual Result ExecuteOnPost();

    /// The second step, at a safe point of the real-time thread. It keeps the rules of such a thread: no
    /// allocation, no lock, no freeing, no exception. [real-time]
    virtual Result ExecuteOnRealtimeThread();

    /// The third step, when the queue is next pumped on the control thread. May allocate, lock, free and
    /// throw; an exception goes to the caller of `PumpFromControlThread` and the step is due again. It must
    /// not post to its own queue: such a message is lost. [control]
    virtual Result ExecuteOnControlThread();

    /// A state read here is seen together with all that the message wrote before it. [any thread]
    [[nodiscard]] State GetState() const noexcept { return mState.load(); }

    /// For the queue alone. [any thread]
    void SetState(State inState) noexcept { mState.exchange(inState); }

protected:
    RealtimeMessage() noexcept = default;
    RealtimeMessage(const RealtimeMessage&) = delete;
    RealtimeMessage& operator=(const RealtimeMessage&) = delete;

private:
    std::atomic<State> mState{State::kWaiting};
};

} // namespace tessaro::messaging
