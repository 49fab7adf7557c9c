#include "pages/ManPage.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace Support
{

namespace
{
std::vector<std::string> WordsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> std::ws, !stream.eof();)
    {
        const bool quoted = stream.peek() == '"';
        if (quoted ? (stream.get(), !std::getline(stream, word, '"')) : !(stream >> word))
            break;
        words.push_back(word);
    }
    return words;
}

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}
} // namespace

CManPage::CManPage(const std::string& path)
{
    std::istringstream page(ReadFile(path));
    for (std::string line; std::getline(page, line);)
        Read(line);
    EXPECT_FALSE(m_lines.empty()) << path;
}

void CManPage::Read(const std::string& line)
{
    if (line == ".Ed")
        m_inDisplay = false;
    else if (m_inDisplay)
        m_displays.back().second += line + "\n";
    else if (!line.empty() && line.front() == '.')
        ReadMacro(line);
}

void CManPage::ReadMacro(const std::string& line)
{
    std::vector<std::string> words = WordsOf(line.substr(1));
    SMacroLine read;
    read.macro = words.empty() ? "" : words.front();
    words.erase(words.begin(), words.begin() + (words.empty() ? 0 : 1));
    read.words = words;
    if (read.macro == "Sh")
    {
        m_section = Joined(words);
        m_part.clear();
    }
    if (read.macro == "Ss")
        m_part = Joined(words);
    m_inDisplay = read.macro == "Bd";
    if (m_inDisplay)
        m_displays.push_back({m_part, ""});
    read.section = m_section;
    read.part = m_part;
    m_lines.push_back(read);
}

std::vector<std::vector<std::string>> CManPage::Items(const std::string& place,
                                                      const std::string& marker) const
{
    std::vector<std::vector<std::string>> items;
    for (const SMacroLine& line : m_lines)
    {
        const bool here = place.empty() || place == line.section || place == line.part;
        if (here && line.macro == "It" && !line.words.empty() && line.words.front() == marker)
            items.emplace_back(line.words.begin() + 1, line.words.end());
    }
    return items;
}

std::string CManPage::Display(const std::string& part) const
{
    const auto found = std::find_if(m_displays.begin(), m_displays.end(),
                                    [&part](const auto& display) { return display.first == part; });
    return found == m_displays.end() ? "" : found->second;
}

std::vector<std::string> CManPage::Options() const
{
    std::vector<std::string> options;
    for (const SMacroLine& line : m_lines)
    {
        std::vector<std::string> words = line.words;
        words.insert(words.begin(), line.macro);
        for (std::size_t i = 0; i + 1 < words.size(); ++i)
        {
            if (words[i] == "Fl")
                options.push_back("-" + words[i + 1]);
        }
    }
    return options;
}

std::vector<std::string> Synopsis(const std::vector<std::string>& words)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
    {
        const bool takes = i + 2 < words.size() && words[i + 2] == "Ar";
        if (words[i] == "Fl")
            names.push_back("-" + words[i + 1] + (takes ? "=" : ""));
        else if (words[i] == "Ar" && (i < 2 || words[i - 2] != "Fl"))
            names.push_back(words[i + 1]);
    }
    return names;
}

} // namespace Support
