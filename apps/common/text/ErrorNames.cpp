#include "common/text/ErrorNames.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/Identifiers.h>

#include <charconv>
#include <cstdint>
#include <cstdio>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kModuleMask = 0xFF0000;
constexpr int kSubModuleMask = 0xFF00;
constexpr int kProblemMask = 0xFF;
constexpr int kFieldValues = 256;

template <typename Value> std::string NameOf(std::string (*translate)(Value), int value)
{
    return translate(static_cast<Value>(value));
}

// The tables cannot be listed, but every value can be asked for its name.
template <typename Value>
std::vector<SNamedValue> AllNames(std::string (*translate)(Value), int first, int end, int step)
{
    std::vector<SNamedValue> names;
    for (int row = first; row < end; ++row)
    {
        const std::string name = NameOf(translate, row * step);
        if (!name.empty())
            names.push_back({name, row * step});
    }
    return names;
}

std::vector<std::string> Split(const std::string& text)
{
    std::vector<std::string> fields(1);
    for (const char c : text)
    {
        if (c == ':')
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields;
}

bool ParseNumber(const std::string& text, int base, std::uint32_t& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end;
}

bool ParseCode(const std::string& text, std::uint32_t& code)
{
    const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    return hexadecimal ? ParseNumber(text.substr(2), 16, code) : ParseNumber(text, 10, code);
}

bool StartsAsNumber(const std::string& text)
{
    return !text.empty() && text[0] >= '0' && text[0] <= '9';
}

bool Describes(int code)
{
    return !NameOf<EModuleIdentifier>(TranslateModuleId, code).empty() &&
           !NameOf<ESubModuleIdentifier>(TranslateSubModuleId, code & kSubModuleMask).empty() &&
           !NameOf<EProblemIdentifier>(TranslateProblemId, code & kProblemMask).empty();
}

void Complain(std::string& problem, const std::string& what)
{
    problem += (problem.empty() ? "" : "; ") + what;
}

// Finds a field's value in its table, or says what is wrong with it and puts the nearest right name in its
// place.
int FieldValue(const char* what, std::string& field, const std::vector<SNamedValue>& table,
               std::string& problem)
{
    for (const SNamedValue& row : table)
    {
        if (row.name == field)
            return row.value;
    }
    const std::string nearest = NearestName(field, NamesOf(table));
    Complain(problem, "no " + std::string(what) + " is called " + QuotedTyped(field) +
                          (nearest.empty() ? "" : ", the nearest is \"" + nearest + "\""));
    field = nearest;
    return 0;
}

int FailureMode(std::string& field, std::string& problem)
{
    if (!StartsAsNumber(field))
        return FieldValue("failure mode", field, FailureModeNames(), problem);
    std::uint32_t number = 0;
    if (ParseNumber(field, 10, number) && number <= eptUnknown)
        return static_cast<int>(number);
    Complain(problem, QuotedTyped(field) + " is no failure mode: they are numbered 0 to 21");
    field.clear();
    return 0;
}

bool ParseNumbers(const std::vector<std::string>& fields, ErrorId& id, std::string& problem)
{
    std::uint32_t code = 0;
    if (!ParseCode(fields[0], code))
        Complain(problem, QuotedTyped(fields[0]) + " is no problem code, such as 0x40C1B");
    else if (code > static_cast<std::uint32_t>(kModuleMask | kSubModuleMask | kProblemMask) ||
             !Describes(static_cast<int>(code)))
        Complain(problem, fields[0] + " is the problem code of no error: one of its parts has no name");
    std::string modeField = fields[1];
    const int mode = FailureMode(modeField, problem);
    if (!problem.empty())
        return false;
    id = ErrorId(static_cast<int>(code), mode);
    return true;
}

bool ParseNames(std::vector<std::string> fields, ErrorId& id, std::string& problem)
{
    const int module = FieldValue("module", fields[0], ModuleNames(), problem);
    const int subModule = FieldValue("sub-module", fields[1], SubModuleNames(), problem);
    const int errorProblem = FieldValue("problem", fields[2], ProblemNames(), problem);
    const int mode = FailureMode(fields[3], problem);
    if (problem.empty())
    {
        id = ErrorId(module | subModule | errorProblem, mode);
        return true;
    }
    if (!fields[0].empty() && !fields[1].empty() && !fields[2].empty() && !fields[3].empty())
        problem +=
            "; did you mean \"" + fields[0] + ":" + fields[1] + ":" + fields[2] + ":" + fields[3] + "\"?";
    return false;
}
} // namespace

const std::vector<SNamedValue>& ModuleNames()
{
    static const std::vector<SNamedValue> names =
        AllNames<EModuleIdentifier>(TranslateModuleId, 1, kFieldValues, 0x10000);
    return names;
}

const std::vector<SNamedValue>& SubModuleNames()
{
    static const std::vector<SNamedValue> names =
        AllNames<ESubModuleIdentifier>(TranslateSubModuleId, 1, kFieldValues, 0x100);
    return names;
}

const std::vector<SNamedValue>& ProblemNames()
{
    static const std::vector<SNamedValue> names =
        AllNames<EProblemIdentifier>(TranslateProblemId, 1, kFieldValues, 1);
    return names;
}

const std::vector<SNamedValue>& FailureModeNames()
{
    static const std::vector<SNamedValue> names =
        AllNames<EProblemType>(TranslateProblemType, 0, eptUnknown, 1);
    return names;
}

const std::vector<SNamedValue>& SeverityNames()
{
    static const std::vector<SNamedValue> names =
        AllNames<EErrorSeverity>(TranslateSeverity, eesLow, eesCritical + 1, 1);
    return names;
}

std::vector<std::string> NamesOf(const std::vector<SNamedValue>& table)
{
    std::vector<std::string> names;
    names.reserve(table.size());
    for (const SNamedValue& row : table)
        names.push_back(row.name);
    return names;
}

std::string ErrorName(int problemCode, int problemType)
{
    return NameOf<EModuleIdentifier>(TranslateModuleId, problemCode & kModuleMask) + ":" +
           NameOf<ESubModuleIdentifier>(TranslateSubModuleId, problemCode & kSubModuleMask) + ":" +
           NameOf<EProblemIdentifier>(TranslateProblemId, problemCode & kProblemMask) + ":" +
           std::to_string(problemType);
}

std::string ErrorNumber(int problemCode, int problemType)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%X:%d", static_cast<unsigned>(problemCode), problemType);
    return text;
}

bool ParseErrorId(const std::string& text, ErrorId& id, std::string& problem)
{
    const std::vector<std::string> fields = Split(text);
    std::string found;
    bool parsed = false;
    if (fields.size() == 2)
        parsed = ParseNumbers(fields, id, found);
    else if (fields.size() == 4)
        parsed = ParseNames(fields, id, found);
    else
        found = QuotedTyped(text) + " is no error: type Module:Sub-module:Problem:Failure mode, such as " +
                "\"Positioning:GPS:No Data:2\", or CODE:TYPE, such as 0x40C1B:2";
    if (!parsed)
        problem = found;
    return parsed;
}

std::string NearestConfigured(const std::string& typed, const CErrorDatabase& database)
{
    ErrorId id;
    std::string ignored;
    const std::string name = ParseErrorId(typed, id, ignored) ? ErrorName(id.first, id.second) : typed;
    std::vector<std::string> names;
    for (const CError& error : database.GetErrorList())
        names.push_back(ErrorName(error.ProblemCode(), error.ProblemType()));
    return NearestName(name, names);
}

} // namespace Faultkeeper::Apps
