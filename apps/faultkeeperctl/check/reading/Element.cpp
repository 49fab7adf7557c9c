#include "faultkeeperctl/check/reading/Element.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include "Common/XmlAttributes.h"

#include <Core/IO/XMLNode.h>

#include <algorithm>
#include <iterator>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;
using Core::IO::XMLNode;

namespace
{
const SElementForm* FormOf(const FileForm& fileForm, const SElementForm& parent, const std::string& name)
{
    for (const SElementForm& form : fileForm)
    {
        if (form.parent == nullptr || std::string(form.parent) != parent.name)
            continue;
        if (form.freedom == eefName || name == form.name)
            return &form;
    }
    return nullptr;
}

// Attributes by which editors find a schema, and those of XML itself.
bool BelongsToXml(const std::string& attribute)
{
    return attribute == "xmlns" || attribute.find(':') != std::string::npos;
}

bool IsBlank(const std::string& text)
{
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

std::string Quoted(const std::string& word)
{
    return "\"" + word + "\"";
}
} // namespace

const FileForm& ListForm()
{
    static const FileForm form(std::begin(kListElements), std::end(kListElements));
    return form;
}

const FileForm& ModuleForm()
{
    static const FileForm form(std::begin(kModuleElements), std::end(kModuleElements));
    return form;
}

const FileForm& PatternsForm()
{
    static const FileForm form(std::begin(kPatternElements), std::end(kPatternElements));
    return form;
}

std::vector<std::string> ChildNames(const FileForm& fileForm, const SElementForm& element)
{
    std::vector<std::string> names;
    for (const SElementForm& form : fileForm)
    {
        if (form.parent != nullptr && std::string(form.parent) == element.name)
            names.emplace_back(form.name);
    }
    return names;
}

std::vector<std::string> AttributeNames(const SElementForm& element)
{
    std::vector<std::string> names;
    for (const SAttributeForm& attribute : element.attributes)
    {
        if (attribute.name != nullptr)
            names.emplace_back(attribute.name);
    }
    return names;
}

SMessage StrangeFlag(const std::string& name, const std::string& value)
{
    if (value == kFlagOn || value == kFlagOff)
        return {};
    const std::string nearest = NearestName(value, {kFlagOn, kFlagOff});
    return {Quoted(name) + " is " + QuotedTyped(value) + ", which counts as " + Quoted(kFlagOff) +
                (nearest.empty() ? ": write " + Quoted(kFlagOn) + " or " + Quoted(kFlagOff)
                                 : "; did you mean " + Quoted(nearest) + "?"),
            nearest};
}

const std::string& CElement::Value(const char* attribute) const
{
    return Attribute(*m_node, attribute);
}

SPlace CElement::Place() const
{
    return {*m_file, m_node->Line(), m_node->Column()};
}

SPlace CElement::Place(const char* attribute) const
{
    SPlace place = Place();
    m_node->AttributePosition(attribute, place.line, place.column);
    return place;
}

bool CElement::IsEmpty() const
{
    return m_node->Children().empty();
}

bool CElement::MayBeOn(const char* flag) const
{
    const std::vector<std::string> names = AttributeNames(*m_form);
    const auto& attributes = m_node->Attributes();
    return std::any_of(attributes.begin(), attributes.end(),
                       [&](const auto& attribute)
                       {
                           const std::string& name = attribute.first;
                           const bool known = std::find(names.begin(), names.end(), name) != names.end();
                           return (known ? name : NearestName(name, names)) == flag &&
                                  attribute.second != kFlagOff &&
                                  StrangeFlag(flag, attribute.second).suggestion != kFlagOff;
                       });
}

bool CElement::HoldsMisspelled(const char* name) const
{
    const std::vector<std::string> names = ChildNames(*m_fileForm, *m_form);
    const auto& children = m_node->Children();
    return std::any_of(children.begin(), children.end(),
                       [&](const XMLNode& child)
                       {
                           return FormOf(*m_fileForm, *m_form, child.Name()) == nullptr &&
                                  NearestName(child.Name(), names) == name;
                       });
}

bool CElement::HasMisspelled(const char* attribute) const
{
    const std::vector<std::string> names = AttributeNames(*m_form);
    const auto& attributes = m_node->Attributes();
    return std::any_of(attributes.begin(), attributes.end(),
                       [&](const auto& there)
                       {
                           const std::string& name = there.first;
                           return std::find(names.begin(), names.end(), name) == names.end() &&
                                  !BelongsToXml(name) && NearestName(name, names) == attribute;
                       });
}

std::string CElement::Lacks(const char* attribute) const
{
    return "this " + Quoted(m_node->Name()) + " has no " + Quoted(attribute);
}

bool CElement::VisitChildren(CFindings& findings, const std::function<void(const CElement&)>& visit) const
{
    bool all = true;
    for (const XMLNode& node : m_node->Children())
    {
        const SElementForm* const form = FormOfChild(node, findings);
        all = all && form != nullptr;
        if (form == nullptr)
            continue;
        const CElement child(*m_fileForm, *m_file, node, *form);
        child.TellUnread(findings);
        visit(child);
    }
    return all;
}

const SElementForm* CElement::FormOfChild(const XMLNode& child, CFindings& findings) const
{
    const SElementForm* const form = FormOf(*m_fileForm, *m_form, child.Name());
    if (form != nullptr)
        return form;
    const std::vector<std::string> names = ChildNames(*m_fileForm, *m_form);
    TellForeignChild(CElement(*m_fileForm, *m_file, child, *m_form), names, findings);
    const std::string nearest = NearestName(child.Name(), names);
    return m_form->onlyKnown == nullptr ? nullptr : FormOf(*m_fileForm, *m_form, nearest);
}

void CElement::TellForeignChild(const CElement& child, const std::vector<std::string>& names,
                                CFindings& findings) const
{
    const SMessage unknown = UnknownName("element", child.m_node->Name(), names);
    const std::string place = " in " + Quoted(m_node->Name());
    if (m_form->onlyKnown != nullptr)
        findings.BrokenRule(child.Place(), *m_form->onlyKnown, unknown);
    else if (unknown.suggestion.empty())
        findings.Warning(child.Place(), QuotedTyped(child.m_node->Name()) + place + " is not read");
    else
        findings.Warning(child.Place(), unknown);
}

void CElement::TellUnread(CFindings& findings) const
{
    if (m_form->freedom == eefContent)
        return;
    for (const auto& attribute : m_node->Attributes())
        TellAttribute(attribute.first, attribute.second, findings);
    if (!IsBlank(m_node->Text()))
        findings.Warning(Place(), "text between the tags of " + Quoted(m_node->Name()) +
                                      " is not read: all values are attributes");
    if (ChildNames(*m_fileForm, *m_form).empty())
        VisitChildren(findings, [](const CElement&) {});
}

void CElement::TellAttribute(const std::string& name, const std::string& value, CFindings& findings) const
{
    const std::vector<std::string> names = AttributeNames(*m_form);
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end() && !BelongsToXml(name))
        findings.Warning(Place(name.c_str()), UnknownName("attribute", name, names));
    if (found == names.end() || m_form->attributes[found - names.begin()].values != eavFlag)
        return;
    const SMessage strange = StrangeFlag(name, value);
    if (!strange.text.empty())
        findings.Warning(Place(name.c_str()), strange);
}

} // namespace Faultkeeper::Apps
