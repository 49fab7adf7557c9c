#pragma once

#include <MPI/BElementC.h>

#include <cstdint>
#include <string>

class BAtomC : public BElementC
{
public:
    explicit BAtomC(std::int64_t value, BElementC* parent = nullptr) : BElementC(parent), m_value(value) {}
    explicit BAtomC(const std::string& text, BElementC* parent = nullptr) : BElementC(parent), m_text(text) {}

    std::string Shown() const override
    {
        return m_text.empty() ? std::to_string(m_value) : '"' + m_text + '"';
    }

private:
    std::int64_t m_value = 0;
    std::string m_text;
};
