#include "faultkeeperctl/check/reading/PatternReader.h"

#include "faultkeeperctl/check/reading/ReferenceReader.h"

#include <Core/IO/XMLDocument.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;

namespace
{
SPatternModel ReadPattern(const CElement& element, const SConfigurationModel& model, CFindings& findings)
{
    SPatternModel pattern;
    pattern.place = element.Place();
    pattern.code = element.Value(kFixedCode);
    pattern.partial = element.Value(kAllowPartialMatch) == kFlagOn;
    pattern.doubtful = !pattern.partial && element.MayBeOn(kAllowPartialMatch);
    element.VisitChildren(findings,
                          [&](const CElement& child)
                          {
                              SReference reference;
                              if (!ReadPatternReference(child, findings, reference))
                              {
                                  pattern.doubtful = true;
                                  return;
                              }
                              reference.target = model.Find(reference.id);
                              pattern.doubtful = pattern.doubtful || reference.doubtful;
                              pattern.ids.push_back(reference);
                          });
    return pattern;
}

void ReadAll(const CElement& patterns, SConfigurationModel& model, CFindings& findings)
{
    patterns.VisitChildren(findings,
                           [&](const CElement& element)
                           {
                               const SPatternModel pattern = ReadPattern(element, model, findings);
                               if (!pattern.code.empty())
                                   model.patterns.push_back(pattern);
                               else if (!element.HasMisspelled(kFixedCode))
                                   findings.Warning(element.Place(kFixedCode),
                                                    "this \"pattern\" has no \"fixedCode\" and is not read");
                           });
}

void ReadTop(const CElement& top, SConfigurationModel& model, CFindings& findings)
{
    top.TellUnread(findings);
    int lists = 0;
    top.VisitChildren(findings,
                      [&](const CElement& patterns)
                      {
                          if (++lists == 1)
                              ReadAll(patterns, model, findings);
                          else
                              findings.Warning(patterns.Place(), "a second \"Patterns\" is not read");
                      });
    if (lists == 0 && !top.HoldsMisspelled(kPatterns))
        findings.Warning(top.Place(), "there is no \"Patterns\" here: no tree gets a friendly code");
}

bool IsAbsent(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::symlink_status(path, ignored).type() == std::filesystem::file_type::not_found;
}
} // namespace

void ReadPatterns(const std::string& prefix, SConfigurationModel& model, CFindings& findings)
{
    const std::string path = prefix + "ErrorPatterns.xml";
    Core::IO::XMLDocument document(true);
    SParseFailure failure;
    const bool read = ParseRegularFile(document, path, failure);
    const bool absent = !read && IsAbsent(path);
    if (absent && !model.listed)
        return; // there is no configuration here at all
    findings.Examine(path);
    if (read)
        ReadTop(CElement(PatternsForm(), path, document.RootNode().Children().front()), model, findings);
    else if (absent)
        findings.Warning({path}, failure.reason + ": no tree gets a friendly code");
    else
        findings.Error({path, std::max(failure.line, 1), std::max(failure.column, 1)}, failure.reason);
}

} // namespace Faultkeeper::Apps
