#ifndef FAULTKEEPERCTL_CHECK_READING_ELEMENT_H
#define FAULTKEEPERCTL_CHECK_READING_ELEMENT_H

#include "faultkeeperctl/check/Findings.h"

#include "Common/database/ConfigurationFormat.h"

#include <functional>
#include <string>
#include <vector>

namespace Core
{
namespace IO
{
class XMLNode;
} // namespace IO
} // namespace Core

namespace Faultkeeper::Apps
{

/// The elements that one kind of file may have, the top element first.
typedef std::vector<ConfigurationFormat::SElementForm> FileForm;

/// The three kinds: the list of modules, a module's file, the patterns.
const FileForm& ListForm();
const FileForm& ModuleForm();
const FileForm& PatternsForm();

/// The names that may stand below an element of this form; empty for one that holds no elements.
std::vector<std::string> ChildNames(const FileForm& fileForm,
                                    const ConfigurationFormat::SElementForm& element);

/// The names of an element's attributes.
std::vector<std::string> AttributeNames(const ConfigurationFormat::SElementForm& element);

/// An element of a file, with its place and the form that it ought to have. Copies are cheap.
///
/// Ownership: file name, document and forms are borrowed.
class CElement
{
public:
    /// The top element.
    CElement(const FileForm& fileForm, const std::string& file, const Core::IO::XMLNode& node)
        : CElement(fileForm, file, node, fileForm.front())
    {
    }

    /// The name that the element ought to have: of one that was misspelled, the right one.
    std::string Name() const { return m_form->name; }
    bool Is(const char* name) const { return Name() == name; }

    /// Value of an attribute, "" if it is not there.
    const std::string& Value(const char* attribute) const;
    SPlace Place() const;
    /// Of the attribute's name; of the element if the attribute is not there.
    SPlace Place(const char* attribute) const;

    /// Does it hold no elements?
    bool IsEmpty() const;

    /// Is the flag on, or does only a slip that is told keep it from that: in its name, or in its value?
    bool MayBeOn(const char* flag) const;

    /// Does it hold an element that does not belong there, and probably was to be one of this name?
    bool HoldsMisspelled(const char* name) const;

    /// Does it have an attribute that does not belong there, and probably was to be this one?
    bool HasMisspelled(const char* attribute) const;

    /// "this "Error" has no "identifier"".
    std::string Lacks(const char* attribute) const;

    /// Visits the children in document order. Before each it tells if the child does not belong here, and
    /// what in it is not read: attributes, flags, text between the tags. A child whose name breaks a rule is
    /// visited under the name that was probably meant, so that what is in it is looked at as well; one that
    /// is skipped by the library is skipped here, too.
    /// @return false if a child was skipped
    bool VisitChildren(CFindings& findings, const std::function<void(const CElement&)>& visit) const;

    /// Tells what in this element is not read.
    void TellUnread(CFindings& findings) const;

private:
    CElement(const FileForm& fileForm, const std::string& file, const Core::IO::XMLNode& node,
             const ConfigurationFormat::SElementForm& form)
        : m_fileForm(&fileForm), m_file(&file), m_node(&node), m_form(&form)
    {
    }

    const ConfigurationFormat::SElementForm* FormOfChild(const Core::IO::XMLNode& child,
                                                         CFindings& findings) const;
    void TellForeignChild(const CElement& child, const std::vector<std::string>& names,
                          CFindings& findings) const;
    void TellAttribute(const std::string& name, const std::string& value, CFindings& findings) const;

    const FileForm* m_fileForm;
    const std::string* m_file;
    const Core::IO::XMLNode* m_node;
    const ConfigurationFormat::SElementForm* m_form;
};

/// What to say of a flag that is neither "yes" nor "no"; "" if it is one of them.
SMessage StrangeFlag(const std::string& name, const std::string& value);

} // namespace Faultkeeper::Apps

#endif
