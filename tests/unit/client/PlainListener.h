#pragma once

#include <string>

/// The owner's end of port 5300 as a bare socket, to see a client's bytes. Waits for what it is asked for,
/// but not for ever: what has not come in half a minute is a failure, told by an exception.
class CPlainListener
{
public:
    /// Listens on 127.0.0.1.
    CPlainListener();
    ~CPlainListener();
    CPlainListener(const CPlainListener&) = delete;
    CPlainListener& operator=(const CPlainListener&) = delete;

    /// Is there a client that has not been accepted?
    bool Waiting() const;
    /// Takes the next client in place of the one before.
    void Accept();
    /// Sends bytes to the client.
    void Say(const std::string& bytes);
    /// What every connection begins with; fails if it is anything else. Returns the session it tells.
    std::string ReadIntroduction();
    /// The next bytes from the client, as many as asked for.
    std::string Read(std::size_t size);
    /// All bytes from the client until it ends.
    std::string ReadToEnd();
    /// Has the client ended, with nothing unread?
    bool Ended();
    /// Ends the connection with the client.
    void HangUp();

private:
    int m_listener;
    int m_client;
};
