#pragma once

#include "subjects/Shapes.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/ErrorDatabase.h>

#include <cstddef>
#include <vector>

namespace Benchmarks
{

enum ELinking
{
    elBothWays,
    elTriggersOnly, ///< owners know their triggers, triggers do not know their owners
    elParentsOnly,  ///< the reverse
};

/// Errors made and linked by hand, without a configuration; they report to an empty database.
class CHandMadeErrors
{
public:
    CHandMadeErrors(EShape shape, std::size_t errors, ELinking linking);

    std::vector<Faultkeeper::CError>& Errors() { return m_errors; }
    Faultkeeper::CErrorDatabase& Database() { return m_database; }

private:
    void Link(std::size_t owner, const SMeasuredSet& set, ELinking linking);

    Faultkeeper::CErrorDatabase m_database;
    std::vector<Faultkeeper::CError> m_errors; // in identifier order
};

} // namespace Benchmarks
