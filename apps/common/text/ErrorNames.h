#ifndef FAULTKEEPER_APPS_ERRORNAMES_H
#define FAULTKEEPER_APPS_ERRORNAMES_H

#include <string>
#include <utility>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// An error's identifier: problem code, problem type.
typedef std::pair<int, int> ErrorId;

/// One row of a name table.
struct SNamedValue
{
    std::string name;
    int value;
};

/// The name tables in the order of their values: what may stand in each field of an error's name.
const std::vector<SNamedValue>& ModuleNames();
const std::vector<SNamedValue>& SubModuleNames();
const std::vector<SNamedValue>& ProblemNames();
const std::vector<SNamedValue>& FailureModeNames();
const std::vector<SNamedValue>& SeverityNames();

/// The names alone, in the order of the table.
std::vector<std::string> NamesOf(const std::vector<SNamedValue>& table);

/// "Positioning:GPS:No Data:2"; a coordinate without a name leaves its field empty.
std::string ErrorName(int problemCode, int problemType);

/// "0x40C1B:2".
std::string ErrorNumber(int problemCode, int problemType);

/// Reads an identifier as people type it: four fields "Module:Sub-module:Problem:Failure mode", the last as a
/// number or a name, or two numbers "CODE:TYPE", the code hexadecimal after "0x", otherwise decimal. Nothing
/// is rounded or cut: blanks, signs, trailing text and numbers that no error can have are refused.
/// @param id       untouched if the result is false
/// @param problem  replaced if the result is false: what is wrong and what may have been meant
bool ParseErrorId(const std::string& text, ErrorId& id, std::string& problem);

/// Name of the configured error that comes nearest to what was typed, or "" if none is near. Numbers are
/// compared as numbers, names as names.
std::string NearestConfigured(const std::string& typed, const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
