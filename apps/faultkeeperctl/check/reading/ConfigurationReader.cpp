#include "faultkeeperctl/check/reading/ConfigurationReader.h"

#include "faultkeeperctl/check/reading/MeantErrors.h"
#include "faultkeeperctl/check/reading/TriggerSetReader.h"

#include "common/text/TypedText.h"

#include <Core/IO/XMLDocument.h>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

CConfigurationReader::CConfigurationReader(const std::string& prefix, CFindings& findings)
    : m_prefix(prefix), m_findings(findings), m_modules(m_model, findings)
{
    ReadList();
    for (const auto& pending : m_modules.Pending())
        CTriggerSetReader(m_model, pending.first, m_findings).Read(pending.second);
    FindMeantErrors(m_model);
}

CConfigurationReader::~CConfigurationReader() = default;

/// What is wrong with a file as a whole has been told before.
const CConfigurationReader::SFile& CConfigurationReader::File(const std::string& name)
{
    const std::string path = m_prefix + name;
    SFile& file = m_files[path];
    if (file.document != nullptr)
        return file;
    m_findings.Examine(path);
    file.path = path;
    file.document = std::make_unique<Core::IO::XMLDocument>(true);
    SParseFailure told;
    if (ParseRegularFile(*file.document, path, told))
        file.top = &file.document->RootNode().Children().front();
    return file;
}

void CConfigurationReader::ReadList()
{
    const SFile& file = File("FaultkeeperConfig.xml");
    if (file.top == nullptr || file.top->Name() != kFaultkeeper)
        return;
    const CElement top(ListForm(), file.path, *file.top);
    top.TellUnread(m_findings);
    int lists = 0;
    top.VisitChildren(m_findings,
                      [&](const CElement& list)
                      {
                          if (++lists == 1)
                              ReadEntries(list);
                          else
                              SkipEntries(list);
                      });
}

void CConfigurationReader::ReadEntries(const CElement& list)
{
    m_model.listed = true;
    if (!list.VisitChildren(m_findings, [this](const CElement& entry) { ReadEntry(entry); }))
        m_model.unreadModules.insert(-1);
}

void CConfigurationReader::SkipEntries(const CElement& list)
{
    m_findings.Warning(list.Place(), "a second \"ErrorList\" is not read");
    if (!list.IsEmpty())
        m_model.unreadModules.insert(-1);
}

void CConfigurationReader::ReadEntry(const CElement& entry)
{
    const SNameRead module =
        ReadName(entry, kIdentifier, "module", ModuleNames(), kModuleIsKnown, m_findings);
    const std::string& name = entry.Value(kFile);
    if (name.empty())
    {
        m_model.unreadModules.insert(module.value);
        return;
    }
    if (module.known)
        TellTwice(entry, module.value);
    ReadModule(module, File(name));
}

void CConfigurationReader::TellTwice(const CElement& entry, int module)
{
    const auto added = m_lines.emplace(std::make_pair(module, entry.Value(kFile)), entry.Place().line);
    if (!added.second)
        m_findings.Warning(entry.Place(), "this \"Module\" is listed before, in line " +
                                              std::to_string(added.first->second) +
                                              ": all of its errors are defined twice");
}

void CConfigurationReader::ReadModule(const SNameRead& module, const SFile& file)
{
    if (file.top != nullptr && file.top->Name() == kModule)
        m_modules.Read(module, CElement(ModuleForm(), file.path, *file.top));
    else
        m_model.unreadModules.insert(module.value);
}

} // namespace Faultkeeper::Apps
