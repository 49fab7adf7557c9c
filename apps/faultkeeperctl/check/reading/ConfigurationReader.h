#ifndef FAULTKEEPERCTL_CHECK_READING_CONFIGURATIONREADER_H
#define FAULTKEEPERCTL_CHECK_READING_CONFIGURATIONREADER_H

#include "faultkeeperctl/check/ConfigurationModel.h"
#include "faultkeeperctl/check/reading/ModuleReader.h"

#include <map>
#include <memory>
#include <string>

namespace Core
{
namespace IO
{
class XMLDocument;
} // namespace IO
} // namespace Core

namespace Faultkeeper::Apps
{

/// Reads all files of a configuration into a model and tells what is wrong in each of them: in the order in
/// which the library reads them, so that the first broken rule is the one over which it would end the
/// process.
class CConfigurationReader
{
public:
    /// @param prefix    put in front of file names as it stands
    /// @param findings  borrowed
    CConfigurationReader(const std::string& prefix, CFindings& findings);
    ~CConfigurationReader();
    CConfigurationReader(const CConfigurationReader&) = delete;
    CConfigurationReader& operator=(const CConfigurationReader&) = delete;

    const SConfigurationModel& Model() const { return m_model; }

private:
    /// A file, read. Where it could not be, there is no top element.
    struct SFile
    {
        std::string path;
        std::unique_ptr<Core::IO::XMLDocument> document;
        const Core::IO::XMLNode* top = nullptr;
    };

    const SFile& File(const std::string& name);
    void ReadList();
    void ReadEntries(const CElement& list);
    void SkipEntries(const CElement& list);
    void ReadEntry(const CElement& entry);
    void TellTwice(const CElement& entry, int module);
    void ReadModule(const SNameRead& module, const SFile& file);

    const std::string m_prefix;
    CFindings& m_findings;
    SConfigurationModel m_model;
    CModuleReader m_modules;
    std::map<std::string, SFile> m_files;               // by path
    std::map<std::pair<int, std::string>, int> m_lines; // of the entries, by module and file
};

} // namespace Faultkeeper::Apps

#endif
