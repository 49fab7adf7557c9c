#include "faultkeeperctl/simulation/Script.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/typed/ConfiguredErrors.h"

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kBlanks = " \t\r";
constexpr const char* kRaise = "raise";
constexpr const char* kClear = "clear";

/// Part of a line, and where it begins.
struct SWord
{
    std::size_t at = 0;
    std::string text;
};

SWord Trimmed(const std::string& line, std::size_t from, std::size_t end)
{
    const std::size_t first = line.find_first_not_of(kBlanks, from);
    if (first >= end)
        return {end, ""};
    const std::size_t last = line.find_last_not_of(kBlanks, end - 1);
    return {first, line.substr(first, last + 1 - first)};
}

// Bytes that go on with a character are none of their own.
int ColumnOf(const std::string& line, std::size_t at)
{
    int column = 1;
    for (std::size_t i = 0; i < at; ++i)
        column += (static_cast<unsigned char>(line[i]) & 0xC0U) == 0x80 ? 0 : 1;
    return column;
}

std::string UnknownRequest(const std::string& typed)
{
    const std::string nearest = NearestName(typed, {kRaise, kClear});
    return "no request is called " + QuotedTyped(typed) +
           (nearest.empty() ? "; there are \"raise ID\" and \"clear ID\""
                            : ", the nearest is \"" + nearest + "\"");
}

class CScriptParser
{
public:
    explicit CScriptParser(const CErrorDatabase& database) : m_database(database) {}

    void Line(int number, const std::string& line)
    {
        const SWord all = Trimmed(line, 0, std::min(line.find('#'), line.size()));
        if (all.text.empty())
            return;
        const std::size_t length = std::min(all.text.find_first_of(kBlanks), all.text.size());
        const std::string request = all.text.substr(0, length);
        const SWord id = Trimmed(line, all.at + length, all.at + all.text.size());
        SScriptStep step;
        step.line = number;
        step.raise = request == kRaise;
        std::string problem;
        if (!step.raise && request != kClear)
            Complain(number, ColumnOf(line, all.at), UnknownRequest(request));
        else if (id.text.empty())
            Complain(number, ColumnOf(line, id.at), "\"" + request + "\" needs an error");
        else if (!ParseConfiguredId(id.text, m_database, step.id, problem))
            Complain(number, ColumnOf(line, id.at), problem);
        else
            m_script.steps.push_back(step);
    }

    const SScript& Script() const { return m_script; }

private:
    void Complain(int line, int column, const std::string& text)
    {
        m_script.mistakes.push_back({line, column, text});
    }

    const CErrorDatabase& m_database;
    SScript m_script;
};
} // namespace

SScript ParseScript(const std::string& text, const CErrorDatabase& database)
{
    CScriptParser parser(database);
    int number = 0;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        parser.Line(++number, text.substr(at, end - at));
        at = end + 1;
    }
    return parser.Script();
}

} // namespace Faultkeeper::Apps
