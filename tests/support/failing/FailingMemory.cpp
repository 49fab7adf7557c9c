#include "support/failing/FailingMemory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

// The system's own functions, beneath the names that are taken here; those of the sanitizer where there is
// one.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FAULTKEEPER_SYSTEM_MEMORY(name) __interceptor_##name
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define FAULTKEEPER_SYSTEM_MEMORY(name) __interceptor_##name
#endif
#ifndef FAULTKEEPER_SYSTEM_MEMORY
#define FAULTKEEPER_SYSTEM_MEMORY(name) __libc_##name
#endif

extern "C"
{
    void* FAULTKEEPER_SYSTEM_MEMORY(malloc)(std::size_t size);
    void* FAULTKEEPER_SYSTEM_MEMORY(calloc)(std::size_t count, std::size_t size);
    void* FAULTKEEPER_SYSTEM_MEMORY(realloc)(void* memory, std::size_t size);
    void FAULTKEEPER_SYSTEM_MEMORY(free)(void* memory);
}

namespace
{

constexpr int kNever = -1;
constexpr int kMostAllocations = 100000; // of an attempt that can be meant

int allocationsLeft = kNever;
long alive = 0;

/// Is it this allocation's turn to fail?
bool Fails()
{
    if (allocationsLeft == kNever)
        return false;
    if (allocationsLeft-- > 0)
        return false;
    errno = ENOMEM;
    return true; // and the count stands at kNever again
}

void* Counted(void* memory)
{
    if (memory != nullptr)
        ++alive;
    return memory;
}

void* New(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

/// Not interposed beneath: nothing but these two operators asks for it here.
void* AlignedNew(std::size_t size, std::align_val_t alignment)
{
    const auto boundary = static_cast<std::size_t>(alignment);
    const std::size_t rounded = (size + boundary - 1) / boundary * boundary;
    void* const memory = Fails() ? nullptr : Counted(std::aligned_alloc(boundary, rounded));
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

// The executable's definitions win over those of the libraries.
extern "C"
{

    void* malloc(std::size_t size) noexcept
    {
        return Fails() ? nullptr : Counted(FAULTKEEPER_SYSTEM_MEMORY(malloc)(size > 0 ? size : 1));
    }

    void* calloc(std::size_t count, std::size_t size) noexcept
    {
        return Fails() ? nullptr : Counted(FAULTKEEPER_SYSTEM_MEMORY(calloc)(count, size));
    }

    void* realloc(void* memory, std::size_t size) noexcept
    {
        if (memory == nullptr)
            return malloc(size);
        return Fails() ? nullptr : FAULTKEEPER_SYSTEM_MEMORY(realloc)(memory, size > 0 ? size : 1);
    }

    void free(void* memory) noexcept
    {
        if (memory != nullptr)
            --alive;
        FAULTKEEPER_SYSTEM_MEMORY(free)(memory);
    }

} // extern "C"

void* operator new(std::size_t size)
{
    return New(size);
}

void* operator new[](std::size_t size)
{
    return New(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size);
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    return AlignedNew(size, alignment);
}

void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return AlignedNew(size, alignment);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept
{
    std::free(memory);
}

namespace FailingMemory
{

long Alive()
{
    return alive;
}

bool CAttempt::Run(const std::function<void()>& action)
{
    bool ended = true;
    allocationsLeft = m_allocations;
    try
    {
        action();
    }
    catch (const std::bad_alloc&)
    {
        ended = false;
    }
    catch (...)
    {
        allocationsLeft = kNever;
        throw;
    }
    m_met = allocationsLeft == kNever;
    allocationsLeft = kNever;
    return ended;
}

namespace
{

/// @return whether an allocation has failed
bool FailOne(const std::function<void(CAttempt&)>& attempt, int allocations)
{
    const long before = Alive();
    CAttempt one(allocations);
    attempt(one);
    EXPECT_EQ(Alive(), before) << "leaked when allocation " << allocations << " failed";
    return one.Met();
}

} // namespace

int FailEach(const std::function<void(CAttempt&)>& attempt)
{
    // What libraries allocate once and for all is allocated by an attempt of which nothing is expected.
    CAttempt undisturbed(kMostAllocations);
    attempt(undisturbed);
    CAttempt first(0);
    attempt(first);
    int failed = 0;
    while (FailOne(attempt, failed) && !testing::Test::HasFailure() && failed < kMostAllocations)
        ++failed;
    return testing::Test::HasFailure() ? -1 : failed;
}

} // namespace FailingMemory
