#ifndef FAULTKEEPERCTL_CHECK_FINDINGS_H
#define FAULTKEEPERCTL_CHECK_FINDINGS_H

#include "common/ConfigurationFiles.h"

#include <map>
#include <string>
#include <vector>

namespace Faultkeeper
{
struct SConfigurationRule;
}

namespace Faultkeeper::Apps
{

/// Where something stands in a file; counted from 1.
struct SPlace
{
    std::string file;
    int line = 1;
    int column = 1; ///< in characters
};

/// "file:line:column".
std::string PlaceText(const SPlace& place);

/// What is told, and what was probably meant.
struct SMessage
{
    std::string text;         ///< with the suggestion
    std::string suggestion{}; ///< "" if there is none
};

/// "unknown <what> "typed"<consequence>; did you mean "name"?", the question only if a name comes near.
SMessage UnknownName(const std::string& what, const std::string& typed, const std::vector<std::string>& names,
                     const std::string& consequence = "");

/// Something that is wrong with a configuration.
struct SCheckFinding
{
    SConfigurationFinding what;               ///< an error is "fatal"
    const SConfigurationRule* rule = nullptr; ///< not null: the library ends the process over this
    int loadOrder = 0;                        ///< of broken rules: when the library meets it, from 1
    bool acrossFiles = false;                 ///< follows from what stands in several places

    /// "file:line:column: error: text", and the rule behind it, as logs in the field number and spell it.
    std::string Line() const;
};

/// Collects findings and puts them in order.
class CFindings
{
public:
    /// Findings of this file are told behind those of the files that were named before.
    void Examine(const std::string& file);
    std::size_t FileCount() const { return m_ranks.size(); }

    void Add(const SConfigurationFinding& finding);
    void Error(const SPlace& place, const std::string& text) { Add(true, place, SMessage{text}); }
    void Warning(const SPlace& place, const std::string& text) { Add(false, place, SMessage{text}); }
    void Warning(const SPlace& place, const SMessage& message) { Add(false, place, message); }

    /// To be called in the order in which the library meets the rules.
    void BrokenRule(const SPlace& place, const SConfigurationRule& rule, const SMessage& message);
    void BrokenRule(const SPlace& place, const SConfigurationRule& rule, const std::string& text)
    {
        BrokenRule(place, rule, SMessage{text});
    }

    /// An error that no file has on its own.
    void ErrorAcross(const SPlace& place, const std::string& text);

    /// File by file, in each by position, and those across files at the end; nothing twice, nor as a warning
    /// what is an error before.
    std::vector<SCheckFinding> InOrder() const;

private:
    SCheckFinding& Add(bool error, const SPlace& place, const SMessage& message);
    std::size_t RankOf(const SCheckFinding& finding) const;
    bool Before(const SCheckFinding& left, const SCheckFinding& right) const;

    std::map<std::string, std::size_t> m_ranks; // of the files
    std::vector<SCheckFinding> m_findings;      // as they came
    int m_brokenRules = 0;
};

} // namespace Faultkeeper::Apps

#endif
