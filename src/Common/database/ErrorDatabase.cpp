#include <Faultkeeper/ErrorDatabase.h>

#include <Faultkeeper/ErrorDbChanged.h>

#include "Common/hierarchy/ErrorGroups.h"
#include "Common/hierarchy/ErrorTops.h"

#include <Core/IO/XMLDocument.h>

namespace Faultkeeper
{

CErrorDbChanged::~CErrorDbChanged() = default;

CErrorDatabase::~CErrorDatabase() = default;

void CErrorDatabase::ErrorRaised(int problemCode, int problemType)
{
    if (m_callback != nullptr)
        m_callback->ErrorRaised(problemCode, problemType);
}

void CErrorDatabase::ErrorCleared(int problemCode, int problemType)
{
    if (m_callback != nullptr)
        m_callback->ErrorCleared(problemCode, problemType);
}

const CError* CErrorDatabase::RetrieveError(int problemCode, int problemType) const
{
    const auto found = m_index.find(ErrorId(problemCode, problemType));
    return found == m_index.end() ? nullptr : &m_errors[static_cast<std::size_t>(found->second)];
}

CError* CErrorDatabase::FindError(int problemCode, int problemType)
{
    const auto found = m_index.find(ErrorId(problemCode, problemType));
    return found == m_index.end() ? nullptr : &m_errors[static_cast<std::size_t>(found->second)];
}

void CErrorDatabase::RaiseError(int problemCode, int problemType, bool silent)
{
    CError* const error = FindError(problemCode, problemType);
    if (error == nullptr)
        return;
    error->Changed(true); // a request counts even if nothing comes of it: its group is shown as touched
    if (!error->Active())
        error->Raise(silent);
}

void CErrorDatabase::ClearError(int problemCode, int problemType, bool silent)
{
    CError* const error = FindError(problemCode, problemType);
    if (error == nullptr)
        return;
    error->Changed(true);
    if (error->Active())
        error->Clear(silent);
}

} // namespace Faultkeeper
