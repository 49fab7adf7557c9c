#pragma once

#include <MPI/BElementC.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class BListC : public BElementC
{
public:
    explicit BListC(BElementC* parent = nullptr) : BElementC(parent) {}
    ~BListC() override { FakeHost::Record("list destroyed"); }

    // Tells lists that are deleted from lists that are only destroyed.
    static void* operator new(std::size_t size);
    static void operator delete(void* list);

    /// Leaves the parent as it is, so that the record shows whether it was given.
    void Append(std::unique_ptr<BElementC> element) { m_elements.push_back(std::move(element)); }

    std::string Shown() const override;

private:
    std::vector<std::unique_ptr<BElementC>> m_elements;
};
