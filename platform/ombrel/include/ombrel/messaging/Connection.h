#pragma once

#include <memory>
#include <utility>

#include <ombrel/Export.h>

namespace ombrel::messaging {

namespace details {

/// The link between a signal and one subscriber, as a connection sees it.
class OMBREL_EXPORT LinkBase
{
public:
    LinkBase() = default;
    LinkBase(const LinkBase&) = delete;
    LinkBase& operator=(const LinkBase&) = delete;
    virtual ~LinkBase();

    virtual void Disconnect() = 0;
    virtual bool IsConnected() const = 0;
};

} // namespace details

/// A handle on what `Signal::Connect` connected. Copies stand for the same connection; dropping them all
/// leaves it connected. It may outlive the signal. [any thread]
class OMBREL_EXPORT Connection
{
public:
    /// Stands for no connection.
    Connection() noexcept = default;
    explicit Connection(std::weak_ptr<details::LinkBase> inLink) noexcept : mLink(std::move(inLink)) {}

    /// Takes the subscriber off the signal: no call of it begins after this returns. One that another thread
    /// had begun before may still be running then, so what the subscriber uses must outlive it, best by being
    /// held by the subscriber itself. It may be called inside a subscriber, its own included, and more than
    /// once.
    void Disconnect() const;

    /// False from `Disconnect` on, and after the end of the signal.
    bool IsConnected() const;

private:
    std::weak_ptr<details::LinkBase> mLink;
};

/// Disconnects when it goes out of scope.
class OMBREL_EXPORT ScopedConnection
{
public:
    ScopedConnection() noexcept = default;
    ScopedConnection(Connection inConnection) noexcept : mConnection(std::move(inConnection)) {}
    ScopedConnection(ScopedConnection&& ioOther) noexcept : mConnection(ioOther.Release()) {}
    ScopedConnection& operator=(ScopedConnection&& ioOther) noexcept;
    ~ScopedConnection();

    void Disconnect() const { mConnection.Disconnect(); }
    bool IsConnected() const { return mConnection.IsConnected(); }

    /// Gives the connection back, to stay connected.
    Connection Release() noexcept { return std::exchange(mConnection, Connection()); }

private:
    Connection mConnection;
};

} // namespace ombrel::messaging
