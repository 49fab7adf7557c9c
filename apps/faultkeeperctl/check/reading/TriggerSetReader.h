#ifndef FAULTKEEPERCTL_CHECK_READING_TRIGGERSETREADER_H
#define FAULTKEEPERCTL_CHECK_READING_TRIGGERSETREADER_H

#include "faultkeeperctl/check/ConfigurationModel.h"
#include "faultkeeperctl/check/reading/Element.h"

#include <map>
#include <string>

namespace Faultkeeper::Apps
{

/// Reads the trigger sets of one error, once all errors are known.
class CTriggerSetReader
{
public:
    /// @param model  borrowed; the error gets its sets
    CTriggerSetReader(SConfigurationModel& model, std::size_t error, CFindings& findings)
        : m_model(model), m_error(error), m_findings(findings)
    {
    }

    void Read(const CElement& triggerSets);

private:
    void ReadSet(const CElement& triggerSet);
    void ReadOption(const CElement& option, STriggerSetModel& set);
    void ApplyOption(const CElement& option, STriggerSetModel& set);
    void TellUnknown(const CElement& option, STriggerSetModel& set);
    void ApplyAutomatic(const CElement& option, STriggerSetModel& set);
    void ApplyThreshold(const CElement& option, STriggerSetModel& set);
    void ApplyLinking(const CElement& option, STriggerSetModel& set);
    void ApplyTitle(const CElement& option, STriggerSetModel& set);
    void ReadTrigger(const CElement& trigger, STriggerSetModel& set);

    SConfigurationModel& m_model;
    const std::size_t m_error;
    CFindings& m_findings;
    std::map<std::string, int> m_optionLines; // of the set that is read
};

} // namespace Faultkeeper::Apps

#endif
