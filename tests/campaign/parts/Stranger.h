#pragma once

#include <string>
#include <vector>

namespace Campaign
{

/// A connection to the owner's port by somebody who has no business there.
class CStranger
{
public:
    CStranger();
    ~CStranger();
    CStranger(CStranger&& other) noexcept;
    CStranger& operator=(CStranger&&) = delete;

    /// Sends what the system takes.
    /// @return false if the connection has ended
    bool Send(const std::string& bytes) const;

    /// Has the owner closed it?
    bool Closed() const;
    /// Waits until it has. @return false if it does not
    bool ClosedInTime() const;

private:
    int m_socket;
};

/// Something that is no report: whole messages that mean nothing, and bytes that are no message.
/// @param number  which; each is another one
std::string Garbage(unsigned number);

/// Is it a message, after all?
bool IsMessage(unsigned number);

/// Has the owner to close a connection over which this comes, and what was before it?
bool EndsConnection(unsigned number);

} // namespace Campaign
