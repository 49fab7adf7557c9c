#ifndef FAULTKEEPER_APPS_CONFIGURATIONFILES_H
#define FAULTKEEPER_APPS_CONFIGURATIONFILES_H

#include <set>
#include <string>
#include <vector>

namespace Core
{
namespace IO
{
class XMLDocument;
class XMLNode;
} // namespace IO
} // namespace Core

namespace Faultkeeper::Apps
{

/// Something that is wrong with a configuration, and where.
struct SConfigurationFinding
{
    bool fatal = false; ///< without it the configuration can't be used; otherwise a warning
    std::string file;
    int line = 1;   ///< from 1, as in all editors
    int column = 1; ///< from 1, in characters
    std::string text;
    std::string suggestion{}; ///< the name that was probably meant; "" if there is none

    /// "file:line:column: error: text", or "warning" for "error".
    std::string Line() const;
};

/// Why a file could not be read.
struct SParseFailure
{
    int line = 0; ///< 0 if the file could not be read at all
    int column = 0;
    std::string reason;
};

/// Reads a file, but nothing that may never end: a pipe, a terminal, a device.
/// @param failure  untouched if all went well
bool ParseRegularFile(Core::IO::XMLDocument& document, const std::string& path, SParseFailure& failure);

/// Tells, before anything depends on it, whether the files of a configuration are there, well-formed and not
/// empty.
///
/// The database itself reads a missing or broken file as an empty one, without a word. Whoever loads one
/// therefore asks here first. Names and texts inside the files are not judged: the database's own rules do
/// that, and an element that does not belong is left for them to refuse.
class CConfigurationFiles
{
public:
    /// Reads FaultkeeperConfig.xml and every module file that it lists.
    /// @param prefix  put in front of every file name as it stands, so it ends with a "/"
    explicit CConfigurationFiles(const std::string& prefix);

    /// True if no finding is fatal.
    bool Usable() const;

    /// In the order of the files.
    const std::vector<SConfigurationFinding>& Findings() const { return m_findings; }

    /// Definitions in all module files; a file listed twice counts twice, as it does for the database.
    int ErrorCount() const { return m_errorCount; }

private:
    void ReadList(const std::string& path);
    void AddMissingList(const std::string& path, const Core::IO::XMLNode& top);
    void ReadModules(const std::string& path, const Core::IO::XMLNode& list);
    void ReadModule(const std::string& listPath, const Core::IO::XMLNode& entry);
    void CountErrors(const std::string& path, const Core::IO::XMLDocument& document);
    void CheckCapacity(const std::string& path, const Core::IO::XMLNode& list);
    void Add(bool fatal, const std::string& file, int line, int column, const std::string& text,
             const std::string& suggestion = "");

    std::string m_prefix;
    int m_errorCount;
    std::set<std::string> m_faulty; // files already found to be wrong: one listed twice is reported once
    std::vector<SConfigurationFinding> m_findings;
};

} // namespace Faultkeeper::Apps

#endif
