#ifndef FAULTKEEPERCTL_CHECK_NEARESTERRORS_H
#define FAULTKEEPERCTL_CHECK_NEARESTERRORS_H

#include <map>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Finds which names of errors were probably meant. Comparing takes long, so that each text is compared once.
class CNearestErrors
{
public:
    /// @param names  of all errors
    explicit CNearestErrors(const std::vector<std::string>& names) : m_names(names) {}

    const std::vector<std::string>& Names() const { return m_names; }

    /// The name that comes nearest; "" if none comes near.
    const std::string& To(const std::string& typed);

private:
    const std::vector<std::string> m_names;
    std::map<std::string, std::string> m_nearest; // by what was typed
};

} // namespace Faultkeeper::Apps

#endif
