#ifndef SOCKETS_FILEDESCRIPTOR_H
#define SOCKETS_FILEDESCRIPTOR_H

#include <unistd.h>
#include <utility>

/// A file descriptor that is closed with the object that holds it.
class FileDescriptor
{
public:
    FileDescriptor() = default;

    /// @param number  owned from here on; negative: none
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(other.Release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        FileDescriptor gone(std::move(other));
        std::swap(m_number, gone.m_number);
        return *this;
    }
    ~FileDescriptor()
    {
        if (Valid())
            close(m_number);
    }

    bool Valid() const { return m_number >= 0; }
    int Number() const { return m_number; }

    /// Gives it away; the caller owns it from here on.
    int Release() { return std::exchange(m_number, -1); }

private:
    int m_number = -1;
};

#endif
