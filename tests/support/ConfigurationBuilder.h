#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Support
{

/// One trigger set of a test's configuration, with the loader's defaults.
struct STestTriggerSet
{
    bool autoTrigger = true;
    int triggersNeeded = 1;
    std::string errorLinking;          ///< "" leaves the option out
    std::string titleSource;           ///< "" leaves the option out
    std::vector<std::string> triggers; ///< ids such as "Positioning:GPS:No Data:2"
};

/// One error of a test's configuration. Texts that are left empty are made from the name.
struct STestError
{
    std::string name; ///< "Positioning:GPS:No Data:2"; the failure mode 0..20 as a number
    std::vector<STestTriggerSet> sets;
    std::string problem;      ///< default "problem of <name>"
    std::string solution;     ///< default "solution of <name>"
    std::string shortProblem; ///< default "short of <name>"
    std::string title;        ///< left out if "-"; default "title of <name>"
    std::string severity = "High";
    std::string flags = "visible=\"yes\""; ///< further attributes of the element, as they stand in the file
};

/// Writes configurations for tests: errors in the given order, one module file for each run of one module.
class CConfigurationBuilder
{
public:
    CConfigurationBuilder& Add(const STestError& error);
    /// An error without trigger sets.
    CConfigurationBuilder& Leaf(const std::string& name);
    /// An error with one automatic set over the given triggers.
    CConfigurationBuilder& Parent(const std::string& name, const std::vector<std::string>& triggers,
                                  int needed = 1);

    /// Writes FaultkeeperConfig.xml and its module files.
    /// @param prefix  the directory, with a slash at its end
    void WriteTo(const std::string& prefix) const;

private:
    std::vector<STestError> m_errors;
};

/// Writes a configuration of one module file whose "Module" element holds `subModules` as it stands.
void WriteRawModule(const std::string& prefix, const std::string& module, const std::string& subModules);

/// The text as the value of an attribute.
std::string XmlEscaped(const std::string& text);

} // namespace Support
