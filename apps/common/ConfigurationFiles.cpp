#include "common/ConfigurationFiles.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include <Core/IO/XMLDocument.h>
#include <Faultkeeper/StatusTable.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
using Core::IO::XMLDocument;
using Core::IO::XMLNode;

SParseFailure FailureOf(const XMLDocument& document)
{
    // "line:column: reason"
    const std::string& text = document.Error();
    char* end = nullptr;
    const long line = std::strtol(text.c_str(), &end, 10);
    const long column = *end == ':' ? std::strtol(end + 1, &end, 10) : 0;
    const std::string reason = *end == ':' ? std::string(end + 1) : std::string(end);
    const std::size_t start = reason.find_first_not_of(' ');
    return {static_cast<int>(line), static_cast<int>(column),
            start == std::string::npos ? "not readable" : reason.substr(start)};
}

/// What a module file holds: definitions, and elements that the database is going to refuse.
struct SContent
{
    int errors = 0;
    int foreign = 0;
};

constexpr const char* kModuleLevels[] = {"SubModule", "Problem", "Error"};
constexpr std::size_t kErrorLevel = 2;

void AddContent(const XMLNode& node, std::size_t level, SContent& content)
{
    for (const XMLNode& child : node.Children())
    {
        if (child.Name() != kModuleLevels[level])
            ++content.foreign;
        else if (level == kErrorLevel)
            ++content.errors;
        else
            AddContent(child, level + 1, content);
    }
}

std::string AttributeOf(const XMLNode& node, const std::string& name)
{
    const auto found = node.Attributes().find(name);
    return found == node.Attributes().end() ? std::string() : found->second;
}
} // namespace

bool ParseRegularFile(XMLDocument& document, const std::string& path, SParseFailure& failure)
{
    std::error_code ignored; // the document itself tells best why a file cannot be read
    const bool endless = std::filesystem::is_other(path, ignored);
    if (!endless && document.Parse(path))
        return true;
    failure = endless ? SParseFailure{0, 0, "Not a regular file"} : FailureOf(document);
    return false;
}

std::string SConfigurationFinding::Line() const
{
    return file + ":" + std::to_string(line) + ":" + std::to_string(column) +
           (fatal ? ": error: " : ": warning: ") + text;
}

CConfigurationFiles::CConfigurationFiles(const std::string& prefix) : m_prefix(prefix), m_errorCount(0)
{
    ReadList(prefix + "FaultkeeperConfig.xml");
}

bool CConfigurationFiles::Usable() const
{
    return std::none_of(m_findings.begin(), m_findings.end(),
                        [](const SConfigurationFinding& finding) { return finding.fatal; });
}

void CConfigurationFiles::ReadList(const std::string& path)
{
    XMLDocument document(false);
    SParseFailure failure;
    if (!ParseRegularFile(document, path, failure))
    {
        Add(true, path, std::max(failure.line, 1), std::max(failure.column, 1), failure.reason);
        return;
    }
    const XMLNode& top = document.RootNode().Children().front();
    const XMLNode* const list = top.Name() == "Faultkeeper" ? top.Child("ErrorList") : nullptr;
    if (top.Name() != "Faultkeeper")
        Add(true, path, top.Line(), top.Column(),
            "the top element is not \"Faultkeeper\" but \"" + top.Name() + "\"",
            NearestName(top.Name(), {"Faultkeeper"}));
    else if (list == nullptr)
        AddMissingList(path, top);
    else
        ReadModules(path, *list);
}

void CConfigurationFiles::AddMissingList(const std::string& path, const XMLNode& top)
{
    const std::string name = "ErrorList";
    const auto misspelled =
        std::find_if(top.Children().begin(), top.Children().end(),
                     [&name](const XMLNode& child) { return NearestName(child.Name(), {name}) == name; });
    if (misspelled == top.Children().end())
        Add(true, path, top.Line(), top.Column(), "there is no \"" + name + "\" in \"Faultkeeper\"");
    else
        Add(true, path, misspelled->Line(), misspelled->Column(),
            "unknown element " + QuotedTyped(misspelled->Name()) + "; did you mean \"" + name + "\"?", name);
}

void CConfigurationFiles::ReadModules(const std::string& path, const XMLNode& list)
{
    if (list.Children().empty())
        Add(true, path, list.Line(), list.Column(), "the \"ErrorList\" is empty: it lists no \"Module\"");
    for (const XMLNode& entry : list.Children())
    {
        if (entry.Name() == "Module")
            ReadModule(path, entry);
    }
    CheckCapacity(path, list);
}

void CConfigurationFiles::ReadModule(const std::string& listPath, const XMLNode& entry)
{
    int line = entry.Line();
    int column = entry.Column();
    entry.AttributePosition("file", line, column);
    const std::string name = AttributeOf(entry, "file");
    if (name.empty())
    {
        Add(true, listPath, line, column, "this \"Module\" names no file");
        return;
    }

    const std::string path = m_prefix + name;
    if (m_faulty.count(path) != 0)
        return;
    XMLDocument document(false);
    SParseFailure failure;
    if (ParseRegularFile(document, path, failure))
    {
        CountErrors(path, document);
        return;
    }
    m_faulty.insert(path);
    if (failure.line > 0)
        Add(true, path, failure.line, failure.column, failure.reason);
    else
        Add(true, listPath, line, column, "module file " + path + ": " + failure.reason);
}

void CConfigurationFiles::CountErrors(const std::string& path, const XMLDocument& document)
{
    const XMLNode& top = document.RootNode().Children().front();
    SContent content;
    if (top.Name() == "Module")
        AddContent(top, 0, content);
    m_errorCount += content.errors;
    if (content.errors + content.foreign > 0)
        return;
    m_faulty.insert(path);
    if (top.Name() == "Module")
        Add(true, path, top.Line(), top.Column(), "the \"Module\" is empty: it defines no error");
    else
        Add(true, path, top.Line(), top.Column(),
            "the top element is not \"Module\" but \"" + top.Name() + "\"",
            NearestName(top.Name(), {"Module"}));
}

void CConfigurationFiles::CheckCapacity(const std::string& path, const XMLNode& list)
{
    const int surplus = m_errorCount - kStatusTableCapacity;
    if (surplus > 0)
        Add(false, path, list.Line(), list.Column(),
            std::to_string(m_errorCount) + " errors are defined, but the shared table holds " +
                std::to_string(kStatusTableCapacity) + ": the last " + std::to_string(surplus) +
                " are not going to be shown");
}

void CConfigurationFiles::Add(bool fatal, const std::string& file, int line, int column,
                              const std::string& text, const std::string& suggestion)
{
    m_findings.push_back({fatal, file, line, column, text, suggestion});
}

} // namespace Faultkeeper::Apps
