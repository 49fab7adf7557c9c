#ifndef FAULTKEEPER_COMMON_ERRORPATH_H
#define FAULTKEEPER_COMMON_ERRORPATH_H

#include <algorithm>
#include <cstddef>
#include <unordered_set>
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
        return std::find(m_errors.begin(), m_errors.end(), &error) != m_errors.end() ||
               (!m_deepErrors.empty() && m_deepErrors.count(&error) > 0);
    }

private:
    friend class CErrorPathStep;

    static constexpr std::size_t kWalked = 32; // deeper than consoles go

    std::vector<const CError*> m_errors;            // not owned; up to kWalked
    std::unordered_set<const CError*> m_deepErrors; // those further down, so that depth costs no time
};

/// Puts an error that the path does not hold at its end for one scope.
class CErrorPathStep
{
public:
    CErrorPathStep(CErrorPath& path, const CError& error)
        : m_path(path), m_error(error), m_deep(path.m_errors.size() == CErrorPath::kWalked)
    {
        if (m_deep)
            m_path.m_deepErrors.insert(&error);
        else
            m_path.m_errors.push_back(&error);
    }
    ~CErrorPathStep()
    {
        if (m_deep)
            m_path.m_deepErrors.erase(&m_error);
        else
            m_path.m_errors.pop_back();
    }
    CErrorPathStep(const CErrorPathStep&) = delete;
    CErrorPathStep& operator=(const CErrorPathStep&) = delete;

private:
    CErrorPath& m_path;
    const CError& m_error;
    const bool m_deep;
};

} // namespace Faultkeeper

#endif
