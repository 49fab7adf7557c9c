#pragma once

#include <FakeHost.h>

#include <string>

class BElementC
{
public:
    explicit BElementC(BElementC* parent) : m_parent(parent) { ++FakeHost::State().elementsAlive; }
    virtual ~BElementC() { --FakeHost::State().elementsAlive; }
    BElementC(const BElementC&) = delete;
    BElementC& operator=(const BElementC&) = delete;

    BElementC* Parent() const { return m_parent; }

    /// As it shows in the record of calls.
    virtual std::string Shown() const = 0;

private:
    BElementC* m_parent;
};
