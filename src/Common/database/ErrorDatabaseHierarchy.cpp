#include <Faultkeeper/ErrorDatabase.h>

#include "Common/ErrorName.h"
#include "Common/hierarchy/HierarchyPositions.h"

#include <iostream>

namespace Faultkeeper
{

void CErrorDatabase::BuildHierarchy()
{
    for (const CError* cyclic : CHierarchyPositions(m_errors).Calculate())
        std::cerr << "Error " << ErrorName(*cyclic) << " is part of a cycle" << std::endl;
}

} // namespace Faultkeeper
