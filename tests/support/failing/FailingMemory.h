#pragma once

#include <functional>

/// Memory that runs out at the moment a test asks for: a program that compiles FailingMemory.cpp in gets all
/// of its memory through it, that of the C libraries beneath included. One thread.
namespace FailingMemory
{

/// How many blocks are allocated and not yet given back.
long Alive();

/// One attempt at something that needs memory, in which one allocation fails.
class CAttempt
{
public:
    /// @param allocations  how many are left alone before the one that fails
    explicit CAttempt(int allocations) : m_allocations(allocations) {}

    /// Runs the part of the attempt in which the allocation fails. Once an attempt.
    /// @return true if it ended by itself, false if it threw std::bad_alloc; any other exception comes out
    bool Run(const std::function<void()>& action);

    /// Did an allocation fail? False once there are fewer of them than are left alone.
    bool Met() const { return m_met; }

private:
    const int m_allocations;
    bool m_met = false;
};

/// Lets the first allocation of an attempt fail, then the second, and so on until there are no more. Expects
/// that each attempt gives back what it has allocated.
/// @param attempt  sets something up, runs the part to be tested with CAttempt::Run, and looks at what is
/// left of it
/// @return how many allocations have failed, or -1 after a failed expectation
int FailEach(const std::function<void(CAttempt&)>& attempt);

} // namespace FailingMemory
