#ifndef FAULTKEEPER_ERRORDATABASE_H
#define FAULTKEEPER_ERRORDATABASE_H

#include <Faultkeeper/Error.h>
#include <Faultkeeper/Export.h>
#include <Faultkeeper/Identifiers.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Core
{
namespace IO
{
class XMLDocument;
class XMLNode;
} // namespace IO
} // namespace Core

namespace Faultkeeper
{

class CErrorDbChanged;
class CErrorGroups;
class CErrorTops;

/// Every fault definition of the console, linked into a hierarchy, with the live state of each.
///
/// The constructor reads FaultkeeperConfig.xml and the module files it lists; after it the error list never
/// changes, so pointers to its errors stay valid as long as the database. The owning process raises and
/// clears errors here by request, parents follow, and the listener hears of each change. Display processes
/// raise and clear silently what the shared table says, and show the tops of the groups of linked errors.
///
/// Ownership: owns its errors and the parsed module documents; the listener is borrowed.
/// Threads: none inside; one thread at a time. Listener calls come on the caller's thread.
/// Failure: broken configuration (a wrong element, an unknown name, a missing text) ends the process with the
/// assertion message that names the rule; a file that is missing or not well-formed contributes nothing,
/// without a message. An identifier that is not known is ignored by every operation.
class FAULTKEEPER_EXPORT CErrorDatabase
{
public:
    /// Loads the configuration.
    /// @param directory  put in front of every file name as it stands, so it ends with a "/"; an empty one is
    ///                   the current directory
    /// A trigger that names its own error is skipped with the line "Error <id> links to itself" on standard
    /// error; a cycle through several errors is reported there too, with one of its errors.
    explicit CErrorDatabase(const std::string& directory);
    ~CErrorDatabase();
    CErrorDatabase(const CErrorDatabase&) = delete;
    CErrorDatabase& operator=(const CErrorDatabase&) = delete;

    /// Has loading run to its end? False if FaultkeeperConfig.xml could not be read or has no error list.
    bool Loaded() const { return m_loaded; }

    /// All errors in the order of the files. Of two definitions with one identifier both are here, but only
    /// the later one is found by identifier, raised, cleared and listed.
    const std::vector<CError>& GetErrorList() const { return m_errors; }

    /// Replaces the listener; null removes it.
    /// @param callback  borrowed
    void SetCallback(CErrorDbChanged* callback) { m_callback = callback; }

    /// Passes a change on to the listener, if there is one. Called by CError.
    void ErrorRaised(int problemCode, int problemType);
    /// The same for an error that was cleared.
    void ErrorCleared(int problemCode, int problemType);

    /// The error with that identifier, or null.
    const CError* RetrieveError(int problemCode, int problemType) const;

    /// Marks the error changed and, if it is inactive, raises it.
    /// @param silent  only this error changes: no listener call, parents do not follow
    void RaiseError(int problemCode, int problemType, bool silent);
    /// Marks the error changed and, if it is active, clears it.
    /// @param silent  as for RaiseError
    void ClearError(int problemCode, int problemType, bool silent);

    /// Rebuilds the four lists of tops from the present state and takes all changed marks back.
    /// Cost: near-linear in the errors; links between them are looked at only if they have changed, and
    /// nothing at all if no error has been touched since the last call.
    void UpdateErrorTree();

    /// Groups the given errors by their direct links and lists one top for each group.
    /// @param errors  in the order that decides ties; left as they are
    /// @param tops    replaced: for each group, in the order of the groups' first members, the member with
    ///                the largest position; among equals the one that was met first. If it is the same list
    ///                as `errors`, it ends empty
    /// Cost: near-linear in the errors and their links.
    void UpdateErrorTree(std::list<const CError*>& errors, std::list<const CError*>& tops);

    /// Called by the view after a synchronisation that changed something; rebuilds the lists.
    void SynchronisationComplete();

    /// Tops of the groups of active errors as of the last UpdateErrorTree(), in identifier order of the
    /// groups' first members.
    /// @param changedOnly  only errors that were the target of a request since the update before, grouped by
    ///                     themselves
    const std::list<const CError*>& ActiveErrors(bool changedOnly) const;
    /// The same for inactive errors.
    const std::list<const CError*>& InactiveErrors(bool changedOnly) const;

    /// Prints every error in identifier order, four lines each: module, sub-module, problem, failure mode.
    void PrintTree() const;
    /// Prints every error without parents, in identifier order, with the hierarchy below it.
    /// @param includeLeaves  also those that have no trigger sets
    void PrintHierarchy(bool includeLeaves) const;
    /// Prints the trigger sets of one error and what is below them. Where an error would contain itself the
    /// listing does not go deeper.
    /// @param indent  begins every line
    void PrintHierarchy(const CError& error, const std::string& indent) const;

private:
    typedef std::pair<int, int> ErrorId; // problem code, problem type

    void ReadModules(const Core::IO::XMLNode& errorList);
    void LoadModule(EModuleIdentifier moduleId, const std::string& path);
    void LoadSubModule(EModuleIdentifier moduleId, ESubModuleIdentifier subModuleId,
                       const Core::IO::XMLNode& subModuleNode);
    void LoadError(EModuleIdentifier moduleId, ESubModuleIdentifier subModuleId, EProblemIdentifier problemId,
                   EProblemType problemType, EErrorSeverity severity, const Core::IO::XMLNode& errorNode,
                   bool visible, bool fullScreen, bool forceShutdown, bool includeServiceNumber,
                   bool shouldBeep, bool shouldBeepIfGuiding);
    void LoadTriggerSet(CError& error, const Core::IO::XMLNode& triggerSetsNode);
    void LoadTriggerSetOptions(CTriggerSet& triggerSet, const Core::IO::XMLNode& optionsNode);
    void LoadTriggerSetTriggers(CError& error, CTriggerSet& triggerSet,
                                const Core::IO::XMLNode& triggersNode);
    void BuildHierarchy();

    CError* FindError(int problemCode, int problemType);

    // Errors tell what may change the lists of tops.
    friend class CError;
    void StateTouched() { m_stateTouched = true; }
    void LinksTouched() { m_linksTouched = true; }
    void ParentsHandedOut(const CError& error);

    std::vector<CError> m_errors;
    std::map<ErrorId, int> m_index; // position in m_errors; iterates in identifier order
    std::string m_directory;
    bool m_reserved;
    bool m_loaded;
    CErrorDbChanged* m_callback; // not owned
    std::vector<std::pair<int, const Core::IO::XMLNode*>>
        m_pendingTriggerSets; // position, node in a document
    std::list<const CError*> m_activeErrors;
    std::list<const CError*> m_changedActiveErrors;
    std::list<const CError*> m_inactiveErrors;
    std::list<const CError*> m_changedInactiveErrors;
    std::map<std::string, std::unique_ptr<Core::IO::XMLDocument>> m_documents; // by path
    bool m_stateTouched;                    // since the last UpdateErrorTree
    bool m_linksTouched;                    // likewise
    bool m_parentsHandedOut;                // to somebody who may change them at any time
    std::unique_ptr<CErrorTops> m_tops;     // made when first needed
    std::unique_ptr<CErrorGroups> m_groups; // likewise
};

} // namespace Faultkeeper

#endif
