#include "harness/Silence.h"

#include <iostream>

namespace Fuzz
{

CSilence::CSilence() : m_output(std::cout.rdbuf(&m_nowhere)), m_error(std::cerr.rdbuf(&m_nowhere)) {}

CSilence::~CSilence()
{
    std::cout.rdbuf(m_output);
    std::cerr.rdbuf(m_error);
}

} // namespace Fuzz
