#pragma once

#include "subjects/Shapes.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cstddef>

namespace Benchmarks
{

/// Turns one error of a database over and back again, then another one, silently, in an order that jumps all
/// over the list. Begins with every third error active if families are measured, otherwise with none, so that
/// chains and diamonds stay in one piece.
class CTurner
{
public:
    /// @param database  borrowed; its lists are up to date afterwards
    CTurner(Faultkeeper::CErrorDatabase& database, EShape shape);

    void Next();

private:
    Faultkeeper::CErrorDatabase& m_database;
    std::size_t m_step;
    std::size_t m_place = 0;
    bool m_turned = false;
};

} // namespace Benchmarks
