#pragma once

#include <algorithm>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <ombrel/messaging/Connection.h>

namespace ombrel::messaging {

template <class Signature>
class Signal;

/// A list of functions that are called when something happens.
///
///     Signal<void(std::string)> renamed;
///     ScopedConnection connection = renamed.Connect([](std::string inName) { ... });
///     renamed.Fire("Track 2");
///
/// Subscribers are called on the thread that fires, in ascending order value, those of equal value in the
/// order in which they connected. No lock is held while a subscriber runs, so it may connect, disconnect and
/// fire.
///
/// Connecting and firing lock for a moment, and connecting allocates: not for real-time threads. [any thread]
template <class... Arguments>
class Signal<void(Arguments...)>
{
public:
    using Function = std::function<void(Arguments...)>;

    /// The order value of those who want to be called last.
    static constexpr int kLast = 0x7FFFFFFF;

    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    /// No call of a subscriber begins after this.
    ~Signal()
    {
        const std::shared_ptr<const Links> links = mCore->Clear();
        for (const auto& link : *links) {
            link->Disconnect();
        }
    }

    /// Calls `inFunction` from now on. Throws `std::bad_function_call` if it is empty. A firing that is under
    /// way does not reach it.
    Connection Connect(Function inFunction, int inOrder = 0)
    {
        if (!inFunction) {
            throw std::bad_function_call();
        }
        auto link = std::make_shared<Link>(std::move(inFunction), inOrder, mCore);
        mCore->Insert(link);
        return Connection(link);
    }

    /// Calls all who are connected now and are still connected when their turn comes; each gets copies of
    /// what its function takes by value. An exception of one does not keep the others from being called: the
    /// first one is thrown again at the end.
    void Fire(const Arguments&... inArguments) const
    {
        const std::shared_ptr<const Links> links = mCore->Take();
        std::exception_ptr firstError;
        for (const std::shared_ptr<Link>& link : *links) {
            const std::shared_ptr<const Function> function = link->GetFunction();
            if (!function) {
                continue;
            }
            try {
                (*function)(inArguments...);
            } catch (...) {
                if (!firstError) {
                    firstError = std::current_exception();
                }
            }
        }
        if (firstError) {
            std::rethrow_exception(firstError);
        }
    }

    bool HasConnections() const { return !mCore->Take()->empty(); }

private:
    class Link;
    using Links = std::vector<std::shared_ptr<Link>>;

    /// The list, replaced by a changed copy at each change, so that a firing walks the one it began with.
    /// Links refer to it weakly, since connections may outlive the signal.
    class Core
    {
    public:
        std::shared_ptr<const Links> Take() const
        {
            std::lock_guard lock(mMutex);
            return mLinks;
        }

        std::shared_ptr<const Links> Clear()
        {
            std::lock_guard lock(mMutex);
            return std::exchange(mLinks, std::make_shared<Links>());
        }

        void Insert(const std::shared_ptr<Link>& inLink)
        {
            std::lock_guard lock(mMutex);
            auto links = std::make_shared<Links>();
            links->reserve(mLinks->size() + 1);
            const auto comesBefore = [](int inOrder, const auto& inOther) {
                return inOrder < inOther->GetOrder();
            };
            const auto place =
                std::upper_bound(mLinks->begin(), mLinks->end(), inLink->GetOrder(), comesBefore);
            links->insert(links->end(), mLinks->begin(), place);
            links->push_back(inLink);
            links->insert(links->end(), place, mLinks->end());
            mLinks = std::move(links);
        }

        void Remove(const Link* inLink)
        {
            std::lock_guard lock(mMutex);
            auto links = std::make_shared<Links>();
            links->reserve(mLinks->size());
            std::copy_if(mLinks->begin(), mLinks->end(), std::back_inserter(*links),
                         [inLink](const auto& inOther) { return inOther.get() != inLink; });
            mLinks = std::move(links);
        }

    private:
        mutable std::mutex mMutex;
        std::shared_ptr<const Links> mLinks = std::make_shared<Links>();
    };

    class Link final : public details::LinkBase
    {
    public:
        Link(Function&& ioFunction, int inOrder, const std::shared_ptr<Core>& inCore)
            : mFunction(std::make_shared<Function>(std::move(ioFunction))), mOrder(inOrder), mCore(inCore)
        {
        }

        int GetOrder() const { return mOrder; }

        /// Null once disconnected. The caller's share keeps the function alive while it runs.
        std::shared_ptr<const Function> GetFunction() const
        {
            std::lock_guard lock(mMutex);
            return mFunction;
        }

        void Disconnect() override
        {
            // Destroyed behind the locks: what the function holds may come back to this signal.
            std::shared_ptr<const Function> function;
            {
                std::lock_guard lock(mMutex);
                function.swap(mFunction);
            }
            if (!function) {
                return;
            }
            if (const std::shared_ptr<Core> core = mCore.lock()) {
                core->Remove(this);
            }
        }

        bool IsConnected() const override { return GetFunction() != nullptr; }

    private:
        mutable std::mutex mMutex;
        std::shared_ptr<const Function> mFunction;
        const int mOrder;
        const std::weak_ptr<Core> mCore;
    };

    std::shared_ptr<Core> mCore = std::make_shared<Core>();
};

} // namespace ombrel::messaging
