#ifndef FAULTKEEPER_COMMON_ERRORPATH_H
#define FAULTKEEPER_COMMON_ERRORPATH_H

#include <algorithm>
#include <vector>

namespace Faultkeeper
{

class CError;

/// The errors from the top of a walk down to where it is. Configuration files may link errors in a circle; a
/// walk shows such an error again but does not go below it, and building and rebuilding a tree turn back at
/// the same places, so that state keys fit.
class CErrorPath
{
public:
    /// Would going down to `error` lead to where the walk comes from?
    bool Holds(const CError& error) const
    {
        return std::find(m_errors.begin(), m_errors.end(), &error) != m_errors.end();
    }

private:
    friend class CErrorPathStep;

    std::vector<const CError*> m_errors; // not owned
};

/// Puts an error at the end of a path for one scope.
class CErrorPathStep
{
public:
    CErrorPathStep(CErrorPath& path, const CError& error) : m_path(path)
    {
        m_path.m_errors.push_back(&error);
    }
    ~CErrorPathStep() { m_path.m_errors.pop_back(); }
    CErrorPathStep(const CErrorPathStep&) = delete;
    CErrorPathStep& operator=(const CErrorPathStep&) = delete;

private:
    CErrorPath& m_path;
};

} // namespace Faultkeeper

#endif
