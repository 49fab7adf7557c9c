#ifndef FAULTKEEPERCTL_CHECK_READING_MODULEREADER_H
#define FAULTKEEPERCTL_CHECK_READING_MODULEREADER_H

#include "faultkeeperctl/check/ConfigurationModel.h"
#include "faultkeeperctl/check/reading/Element.h"

#include <string>
#include <utility>
#include <vector>

namespace Faultkeeper::Apps
{

/// What an attribute that holds a name stands for, or several of them together.
struct SNameRead
{
    int value;  ///< of the nearest name if the name itself is not known; -1 if none is near
    bool known; ///< the name itself is
};

/// Reads a name, and tells as a broken rule if it is not there or not known.
/// @param what  as people call it: "sub-module"
SNameRead ReadName(const CElement& element, const char* attribute, const std::string& what,
                   const std::vector<SNamedValue>& names, const SConfigurationRule& rule,
                   CFindings& findings);

/// Reads the definitions of modules' files, in the order of loading, and remembers where their trigger sets
/// are.
class CModuleReader
{
public:
    /// An error's place in the model and the element that holds its sets.
    typedef std::vector<std::pair<std::size_t, CElement>> PendingSets;

    /// @param model  borrowed; gets the errors
    CModuleReader(SConfigurationModel& model, CFindings& findings) : m_model(model), m_findings(findings) {}

    /// @param top  the file's top element; its document must be there as long as PendingSets is used
    void Read(const SNameRead& module, const CElement& top);

    const PendingSets& Pending() const { return m_pending; }

private:
    void ReadSubModule(const SNameRead& module, const CElement& subModule);
    void ReadProblem(const SNameRead& code, const CElement& problem);
    void ReadError(const SNameRead& code, const CElement& error);
    int ReadFailureMode(const CElement& error, SDefinition& definition);
    void ReadContent(const CElement& error, SDefinition& definition);
    void RememberSets(const CElement& triggerSets, std::size_t before, SDefinition& definition);
    void ReadText(const CElement& text, SDefinition& definition);
    void RequireTexts(const SDefinition& definition);
    void Define(const SDefinition& definition);
    void Doubt(SDefinition& guessed);

    SConfigurationModel& m_model;
    CFindings& m_findings;
    PendingSets m_pending;
};

} // namespace Faultkeeper::Apps

#endif
