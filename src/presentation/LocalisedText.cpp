#include <Faultkeeper/ErrorPresentation.h>

#include "Common/ErrorName.h"
#include "presentation/TextKeys.h"

#include <Faultkeeper/Error.h>

#include <fstream>

namespace Faultkeeper
{

namespace
{
// Flushed line by line: what is there of a file that could not be finished is whole.
void WriteRecord(std::ostream& out, const std::string& key, const std::string& text)
{
    out << '[' << key << ']' << std::endl;
    out << text << std::endl;
}

void WriteError(std::ostream& out, const CError& error)
{
    const std::string name = ErrorName(error);
    WriteRecord(out, name + kProblemKey, error.ProblemText());
    WriteRecord(out, name + kSolutionKey, error.SolutionText());
    WriteRecord(out, name + kTitleKey, error.TitleText());
    WriteRecord(out, name + kShortProblemKey, error.ShortProblemText());
}
} // namespace

void CErrorPresentation::DumpLocalisedText(const std::vector<CError>& errors, const std::string& path)
{
    std::ofstream out(path);
    for (const CError& error : errors)
        WriteError(out, error);
}

} // namespace Faultkeeper
