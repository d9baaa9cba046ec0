#include <ombrel/messaging/Connection.h>

namespace ombrel::messaging {

namespace details {

LinkBase::~LinkBase() = default;

} // namespace details

void Connection::Disconnect() const
{
    if (const auto link = mLink.lock()) {
        link->Disconnect();
    }
}

bool Connection::IsConnected() const
{
    const auto link = mLink.lock();
    return link && link->IsConnected();
}

ScopedConnection& ScopedConnection::operator=(ScopedConnection&& ioOther) noexcept
{
    if (this != &ioOther) {
        mConnection.Disconnect();
        mConnection = ioOther.Release();
    }
    return *this;
}

ScopedConnection::~ScopedConnection()
{
    mConnection.Disconnect();
}

} // namespace ombrel::messaging
