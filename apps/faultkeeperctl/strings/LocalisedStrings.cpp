#include "faultkeeperctl/strings/LocalisedStrings.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/Settings.h"
#include "faultkeeperctl/TemporaryName.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

namespace Faultkeeper::Apps
{

namespace
{
class CTemporaryFile
{
public:
    CTemporaryFile() : m_path(TemporaryNamePattern())
    {
        const int descriptor = mkstemp(m_path.data());
        if (descriptor < 0)
            throw CFailure(epsNo, "cannot make the file " + m_path + ": " + std::strerror(errno));
        close(descriptor);
    }
    ~CTemporaryFile() { unlink(m_path.c_str()); }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}
} // namespace

std::vector<CError> LastDefinitions(const std::vector<CError>& errors)
{
    std::set<ErrorId> later;
    std::vector<CError> last;
    for (auto error = errors.rbegin(); error != errors.rend(); ++error)
    {
        if (later.emplace(error->ProblemCode(), error->ProblemType()).second)
            last.push_back(*error);
    }
    std::reverse(last.begin(), last.end());
    return last;
}

std::string LocalisedStrings(const std::vector<CError>& defined)
{
    const std::vector<CError> errors = LastDefinitions(defined);
    const CTemporaryFile file;
    CErrorPresentation::DumpLocalisedText(errors, file.Path());
    std::ostringstream text;
    text << std::ifstream(file.Path(), std::ios::binary).rdbuf();
    // a full disk cuts the file off, so what comes last tells whether all of it is there
    if (!errors.empty() && !EndsWith(text.str(), "\n" + errors.back().ShortProblemText() + "\n"))
        throw CFailure(epsNo, "the temporary file " + file.Path() + " could not be written whole");
    return text.str();
}

std::vector<STextRecord> OriginalTexts(const std::vector<CError>& errors)
{
    return ParsedTexts(LocalisedStrings(errors));
}

} // namespace Faultkeeper::Apps
