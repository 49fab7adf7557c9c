#include "support/ConfigurationBuilder.h"

#include "support/FreshDirectory.h"

#include <sstream>
#include <stdexcept>

namespace Support
{

namespace
{
// Error elements spell the failure mode by its name, triggers by its number.
const char* const kFailureModes[] = {"DataValidButAboveOperatingRangeSevere",
                                     "DataValidButBelowOperatingRangeSevere",
                                     "DataErraticAndIntermittentlyIncorrect",
                                     "VoltageAboveNormalOrShortedHigh",
                                     "VoltageBelowNormalOrShortedLow",
                                     "CurrentBelowNormalOrOpenCircuit",
                                     "CurrentAboveNormalOrShortedGround",
                                     "MechanicalSystemNotRespondingOrNeedsAdjustment",
                                     "AbnormalFrequencyOrPulseWidthOrPeriod",
                                     "AbnormalUpdateRate",
                                     "AbnormalRateOfChange",
                                     "RootCauseUnknown",
                                     "BadIntelligentDeviceOrComponent",
                                     "OutOfCalibration",
                                     "SpecialInstructions",
                                     "DataValidButAboveOperatingRangeMinor",
                                     "DataValidButAboveOperatingRangeModerate",
                                     "DataValidButBelowOperatingRangeMinor",
                                     "DataValidButBelowOperatingRangeModerate",
                                     "ReceivedNetworkDataInError",
                                     "DataCollectionTimeout"};

struct SName
{
    std::string module, subModule, problem, failureMode;
};

SName Split(const std::string& name)
{
    std::istringstream fields(name);
    SName result;
    std::string number;
    if (!std::getline(fields, result.module, ':') || !std::getline(fields, result.subModule, ':') ||
        !std::getline(fields, result.problem, ':') || !std::getline(fields, number))
        throw std::invalid_argument("not an error name: " + name);
    const std::size_t mode = std::stoul(number);
    result.failureMode = mode < std::size(kFailureModes) ? kFailureModes[mode] : "NotAFailureMode";
    return result;
}

std::string Attribute(const std::string& name, const std::string& value)
{
    return " " + name + "=\"" + XmlEscaped(value) + "\"";
}

void WriteText(std::ostream& out, const std::string& type, const std::string& text,
               const std::string& otherwise)
{
    if (text != "-")
        out << "<Text" << Attribute("type", type) << Attribute("text", text.empty() ? otherwise : text)
            << "/>\n";
}

void WriteOption(std::ostream& out, const std::string& name, const std::string& value)
{
    if (!value.empty())
        out << "<Option" << Attribute("name", name) << Attribute("value", value) << "/>\n";
}

void WriteSet(std::ostream& out, const STestTriggerSet& set)
{
    out << "<TriggerSet>\n<Options>\n";
    WriteOption(out, "autoTrigger", set.autoTrigger ? "yes" : "no");
    WriteOption(out, "triggersNeeded", std::to_string(set.triggersNeeded));
    WriteOption(out, "errorLinking", set.errorLinking);
    WriteOption(out, "titleSource", set.titleSource);
    out << "</Options>\n<Triggers>\n";
    for (const std::string& trigger : set.triggers)
        out << "<Trigger" << Attribute("id", trigger) << "/>\n";
    out << "</Triggers>\n</TriggerSet>\n";
}

void WriteError(std::ostream& out, const STestError& error)
{
    const SName name = Split(error.name);
    out << "<SubModule" << Attribute("identifier", name.subModule) << ">\n<Problem"
        << Attribute("identifier", name.problem) << ">\n<Error" << Attribute("identifier", name.failureMode)
        << Attribute("severity", error.severity) << " " << error.flags << ">\n";
    WriteText(out, "problem", error.problem, "problem of " + error.name);
    WriteText(out, "solution", error.solution, "solution of " + error.name);
    WriteText(out, "shortProblem", error.shortProblem, "short of " + error.name);
    WriteText(out, "title", error.title, "title of " + error.name);
    if (!error.sets.empty())
    {
        out << "<TriggerSets>\n";
        for (const STestTriggerSet& set : error.sets)
            WriteSet(out, set);
        out << "</TriggerSets>\n";
    }
    out << "</Error>\n</Problem>\n</SubModule>\n";
}

std::string ListEntry(const std::string& module, const std::string& file)
{
    return "<Module" + Attribute("identifier", module) + Attribute("file", file) + "/>\n";
}

void WriteList(const std::string& prefix, const std::string& entries)
{
    WriteFile(prefix + "FaultkeeperConfig.xml",
              "<Faultkeeper>\n<ErrorList>\n" + entries + "</ErrorList>\n</Faultkeeper>\n");
}
} // namespace

CConfigurationBuilder& CConfigurationBuilder::Add(const STestError& error)
{
    m_errors.push_back(error);
    return *this;
}

CConfigurationBuilder& CConfigurationBuilder::Leaf(const std::string& name)
{
    STestError error;
    error.name = name;
    return Add(error);
}

CConfigurationBuilder& CConfigurationBuilder::Parent(const std::string& name,
                                                     const std::vector<std::string>& triggers, int needed)
{
    STestTriggerSet set;
    set.triggersNeeded = needed;
    set.triggers = triggers;
    STestError error;
    error.name = name;
    error.sets.push_back(set);
    return Add(error);
}

void CConfigurationBuilder::WriteTo(const std::string& prefix) const
{
    std::string entries;
    std::size_t next = 0;
    for (int file = 0; next < m_errors.size(); ++file)
    {
        const std::string module = Split(m_errors[next].name).module;
        std::ostringstream out;
        out << "<Module>\n";
        for (; next < m_errors.size() && Split(m_errors[next].name).module == module; ++next)
            WriteError(out, m_errors[next]);
        out << "</Module>\n";
        const std::string name = "module" + std::to_string(file) + ".xml";
        WriteFile(prefix + name, out.str());
        entries += ListEntry(module, name);
    }
    WriteList(prefix, entries);
}

void WriteRawModule(const std::string& prefix, const std::string& module, const std::string& subModules)
{
    WriteFile(prefix + "module.xml", "<Module>\n" + subModules + "</Module>\n");
    WriteList(prefix, ListEntry(module, "module.xml"));
}

std::string XmlEscaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        switch (c)
        {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\n':
            result += "&#10;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace Support
