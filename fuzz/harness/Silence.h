#pragma once

#include <streambuf>

namespace Fuzz
{

/// Drops what goes to the standard output and error streams while it lives: listings and warnings are made
/// and nobody reads them.
class CSilence
{
public:
    CSilence();
    ~CSilence();
    CSilence(const CSilence&) = delete;
    CSilence& operator=(const CSilence&) = delete;

private:
    class CNowhere : public std::streambuf
    {
        int overflow(int character) override { return traits_type::not_eof(character); }
        std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
    };

    CNowhere m_nowhere;
    std::streambuf* m_output; // of the standard streams before
    std::streambuf* m_error;
};

} // namespace Fuzz
