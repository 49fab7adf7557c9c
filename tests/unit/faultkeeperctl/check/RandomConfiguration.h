#pragma once

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace CheckCases
{

/// An element of a file that is made up.
struct SElement
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<SElement> children;
};

/// Makes up configurations: good ones of a few modules and errors, linked at random, and then edits to them,
/// such as people make by mistake.
class CRandomConfiguration
{
public:
    explicit CRandomConfiguration(unsigned seed) : m_random(seed) {}

    /// Writes a new configuration to the working directory.
    void Write(int edits);

private:
    typedef std::vector<std::string> Words;

    std::size_t Below(std::size_t end) { return m_random() % end; }
    const std::string& OneOf(const Words& words) { return words[Below(words.size())]; }
    std::string ErrorId();
    std::string Flag();
    SElement List();
    SElement Module();
    SElement Problem();
    SElement Error();
    SElement TriggerSets();
    SElement TriggerSet();

    void Edit(SElement& top);
    SElement& AnyElement(SElement& top);
    void EditChildren(SElement& element);
    void EditAttribute(SElement& element);
    std::string Misspelled(std::string word);

    std::mt19937 m_random;
};

} // namespace CheckCases
