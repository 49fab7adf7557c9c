#include <Faultkeeper/ErrorDatabase.h>

#include "Common/Numbers.h"
#include "Common/XmlAttributes.h"
#include "Common/database/ConfigurationFormat.h"
#include "Common/hierarchy/ErrorGroups.h"
#include "Common/hierarchy/ErrorTops.h"

#include <Core/IO/XMLDocument.h>
#include <Core/IO/XMLNode.h>

#include <functional>
#include <memory>
#include <string>

namespace Faultkeeper
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

namespace
{
/// The list of modules in a configuration document, or null.
const Core::IO::XMLNode* FindErrorList(const Core::IO::XMLDocument& document)
{
    const Core::IO::XMLNode* const top = document.RootNode().Child(kFaultkeeper);
    return top == nullptr ? nullptr : top->Child(kErrorList);
}

void SetText(CError& newError, const Core::IO::XMLNode& textNode)
{
    const std::string& textType = Attribute(textNode, kType);
    const std::string& textContent = Attribute(textNode, kContent);
    Require(!textType.empty(), kTextHasType);
    Require(!textContent.empty(), kTextHasContent);
    for (const STextForm& form : kTextForms)
    {
        if (textType == form.type)
            std::invoke(form.set, newError, textContent);
    }
}

void RequireTexts(const CError& newError)
{
    for (const STextForm& form : kTextForms)
    {
        if (form.required != nullptr)
            Require(!std::invoke(form.get, newError).empty(), *form.required);
    }
}

/// How many errors a module's document defines. Counts what stands where errors stand; what does not belong
/// there ends the loading later.
std::size_t CountErrors(const Core::IO::XMLDocument& document)
{
    const Core::IO::XMLNode* const module = document.RootNode().Child(kModule);
    std::size_t errors = 0;
    if (module == nullptr)
        return errors;
    for (const Core::IO::XMLNode& subModule : module->Children())
    {
        for (const Core::IO::XMLNode& problem : subModule.Children())
            errors += problem.Children().size();
    }
    return errors;
}

/// Reads what stands below an "Error" element into the error.
/// @return the last "TriggerSets" element, or null
const Core::IO::XMLNode* ReadErrorChildren(CError& newError, const Core::IO::XMLNode& errorNode)
{
    const Core::IO::XMLNode* triggerSets = nullptr;
    for (const Core::IO::XMLNode& node : errorNode.Children())
    {
        if (node.Name() == kTriggerSets)
        {
            triggerSets = &node;
        }
        else if (node.Name() != kServiceDescription) // notes for technicians, not shown on the console
        {
            Require(node.Name() == kText, kErrorHoldsTexts);
            SetText(newError, node);
        }
    }
    return triggerSets;
}
} // namespace

CErrorDatabase::CErrorDatabase(const std::string& directory)
    : m_directory(directory), m_reserved(false), m_loaded(false), m_callback(nullptr), m_stateTouched(true),
      m_linksTouched(true), m_parentsHandedOut(false)
{
    Core::IO::XMLDocument document(false);
    document.Parse(m_directory + "FaultkeeperConfig.xml"); // a failed parse leaves nothing to be found below
    const Core::IO::XMLNode* const errorList = FindErrorList(document);
    if (errorList == nullptr)
        return;
    ReadModules(*errorList);
    for (const Core::IO::XMLNode& moduleNode : errorList->Children())
    {
        Require(moduleNode.Name() == kModule, kListHoldsModules);
        const EModuleIdentifier moduleId = TranslateModuleId(Attribute(moduleNode, kIdentifier));
        Require(moduleId != emiUnknown, kModuleIsKnown);
        LoadModule(moduleId, m_directory + Attribute(moduleNode, kFile));
    }
    // Only now is the error list complete, so that triggers may name errors of later modules and pointers
    // into the list stay valid.
    for (const auto& pending : m_pendingTriggerSets)
        LoadTriggerSet(m_errors[static_cast<std::size_t>(pending.first)], *pending.second);
    BuildHierarchy();
    m_loaded = true;
}

/// Reads the modules' files, and makes room for all of their errors at once: errors are never moved.
void CErrorDatabase::ReadModules(const Core::IO::XMLNode& errorList)
{
    std::size_t errors = 0;
    for (const Core::IO::XMLNode& moduleNode : errorList.Children())
    {
        const std::string path = m_directory + Attribute(moduleNode, kFile);
        std::unique_ptr<Core::IO::XMLDocument>& document = m_documents[path];
        if (document == nullptr)
        {
            document = std::make_unique<Core::IO::XMLDocument>(false);
            document->Parse(path); // likewise
        }
        errors += CountErrors(*document);
    }
    m_errors.reserve(errors);
}

void CErrorDatabase::LoadModule(EModuleIdentifier moduleId, const std::string& path)
{
    const Core::IO::XMLNode* const module = m_documents.at(path)->RootNode().Child(kModule);
    if (module == nullptr)
        return;
    for (const Core::IO::XMLNode& subModuleNode : module->Children())
    {
        Require(subModuleNode.Name() == kSubModule, kModuleHoldsSubModules);
        const ESubModuleIdentifier subModuleId = TranslateSubModuleId(Attribute(subModuleNode, kIdentifier));
        Require(subModuleId != esmiUnknown, kSubModuleIsKnown);
        LoadSubModule(moduleId, subModuleId, subModuleNode);
    }
}

void CErrorDatabase::LoadSubModule(EModuleIdentifier moduleId, ESubModuleIdentifier subModuleId,
                                   const Core::IO::XMLNode& subModuleNode)
{
    for (const Core::IO::XMLNode& problemNode : subModuleNode.Children())
    {
        Require(problemNode.Name() == kProblem, kSubModuleHoldsProblems);
        const EProblemIdentifier problemId = TranslateProblemId(Attribute(problemNode, kIdentifier));
        Require(problemId != epiUnknown, kProblemIsKnown);
        for (const Core::IO::XMLNode& errorNode : problemNode.Children())
        {
            Require(errorNode.Name() == kError, kProblemHoldsErrors);
            const std::string& errorIdentifier = Attribute(errorNode, kIdentifier);
            Require(!errorIdentifier.empty(), kErrorHasIdentifier);
            const EProblemType problemType = TranslateProblemType(errorIdentifier);
            const EErrorSeverity errorSeverity = TranslateSeverity(Attribute(errorNode, kSeverity));
            Require(errorSeverity != eesUnknown, kSeverityIsKnown);
            LoadError(moduleId, subModuleId, problemId, problemType, errorSeverity, errorNode,
                      Flag(errorNode, kVisible), Flag(errorNode, kFullScreen),
                      Flag(errorNode, kForceShutdown), Flag(errorNode, kIncludeServiceNumber),
                      Flag(errorNode, kShouldBeep), Flag(errorNode, kShouldBeepIfGuiding));
        }
    }
}

void CErrorDatabase::LoadError(EModuleIdentifier moduleId, ESubModuleIdentifier subModuleId,
                               EProblemIdentifier problemId, EProblemType problemType,
                               EErrorSeverity severity, const Core::IO::XMLNode& errorNode, bool visible,
                               bool fullScreen, bool forceShutdown, bool includeServiceNumber,
                               bool shouldBeep, bool shouldBeepIfGuiding)
{
    const int position = static_cast<int>(m_errors.size());
    m_errors.emplace_back(*this, moduleId, subModuleId, problemId, problemType, severity, visible, fullScreen,
                          forceShutdown, includeServiceNumber, shouldBeep, shouldBeepIfGuiding);
    CError& newError = m_errors.back();
    const Core::IO::XMLNode* const triggerSets = ReadErrorChildren(newError, errorNode);
    RequireTexts(newError);
    m_index[ErrorId(newError.ProblemCode(), problemType)] =
        position; // of two definitions the later one is found
    if (triggerSets != nullptr)
        m_pendingTriggerSets.emplace_back(position, triggerSets);
}

} // namespace Faultkeeper
