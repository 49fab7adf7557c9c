#include "pages/Page.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>
#include <Faultkeeper/ErrorTree.h>

#include <gtest/gtest.h>

#include <bitset>
#include <sstream>
#include <stdexcept>

using namespace Faultkeeper;
using namespace Support;

namespace
{

std::string Name(const CError& error)
{
    return TranslateModuleId(error.ModuleId()) + ":" + TranslateSubModuleId(error.SubModuleId()) + ":" +
           TranslateProblemId(error.ProblemId()) + ":" + std::to_string(error.ProblemType());
}

const CError& Named(const CErrorDatabase& database, const std::string& name)
{
    for (const CError& error : database.GetErrorList())
    {
        if (Name(error) == name)
            return error;
    }
    throw std::runtime_error("no error is called " + name);
}

/// A line: bits on the left, what they say on the right.
std::string Line(const std::string& bits, const std::string& meaning)
{
    return bits + std::string(bits.size() < 26 ? 26 - bits.size() : 1, ' ') + meaning + "\n";
}

std::string Activity(const CTriggerSet& set)
{
    std::string bits;
    for (const CError* const trigger : set.Triggers())
        bits += trigger->Active() ? '1' : '0';
    return bits;
}

/// Takes a key apart from the definitions alone, and puts it together again.
class CKeyExplained
{
public:
    CKeyExplained(const CError& top, int index)
        : m_bits(std::bitset<10>(static_cast<unsigned>(index)).to_string()),
          m_text(Line(m_bits, "position " + std::to_string(index) + " in the table"))
    {
        Add(top);
        const std::string padding((8 - m_bits.size() % 8) % 8, '0');
        m_bits += padding;
        if (!padding.empty())
            m_text += Line(padding, "up to a whole byte");
        for (std::size_t at = 0; at < m_bits.size(); at += 8)
        {
            char byte[8];
            std::snprintf(byte, sizeof byte, "%02X",
                          static_cast<unsigned>(std::stoul(m_bits.substr(at, 8), nullptr, 2)));
            m_key += byte;
            m_groups += (at == 0 ? "" : " ") + m_bits.substr(at, 8);
        }
    }

    const std::string& Key() const { return m_key; }
    std::string Text() const { return m_text + "\n" + m_groups + "\n" + m_key + "\n"; }

private:
    void Add(const CError& error)
    {
        std::string sets;
        for (const CTriggerSet& set : error.TriggerSets())
        {
            m_bits += Activity(set);
            sets += (sets.empty() ? "" : " ") + Activity(set);
        }
        if (!sets.empty())
            m_text += Line(sets, Name(error));
        for (const CTriggerSet& set : error.TriggerSets())
        {
            for (const CError* const trigger : set.Triggers())
            {
                if (trigger->Active())
                    Add(*trigger);
            }
        }
    }

    std::string m_bits;
    std::string m_text;
    std::string m_groups;
    std::string m_key;
};

/// An owner and a display of the example configuration.
class BytesOfKeyTest : public SharedTableTest
{
protected:
    BytesOfKeyTest() : m_database(EXAMPLE_CONFIGURATION), m_owner(true, eViewOwner)
    {
        m_owner.LoadErrors(m_database);
        m_owner.FaultkeeperReady(true);
    }

    /// The key of the one tree that there is after errors with these names have been raised.
    SErrorTree Tree(const std::vector<std::string>& names)
    {
        for (const std::string& name : names)
            m_database.RaiseError(Named(m_database, name).ProblemCode(),
                                  Named(m_database, name).ProblemType(), false);
        m_database.UpdateErrorTree();
        CErrorDatabaseView reader(false, eViewReader);
        CErrorDatabase ofReader(EXAMPLE_CONFIGURATION);
        reader.Synchronise(ofReader);
        std::vector<SErrorTree> trees;
        CErrorPresentation::GetErrorTree(reader, CErrorOverlay(EXAMPLE_CONFIGURATION),
                                         m_database.ActiveErrors(false), trees, false);
        return trees.at(0);
    }

    int Index(const CError& error)
    {
        CErrorDatabaseView reader(false, eViewReader);
        CErrorDatabase ofReader(EXAMPLE_CONFIGURATION);
        reader.Synchronise(ofReader);
        return reader.RetrieveErrorIndex(error.ProblemCode(), error.ProblemType());
    }

    CErrorDatabase m_database;
    CErrorDatabaseView m_owner;
};

} // namespace

TEST_F(BytesOfKeyTest, ThePageTakesTheKeysApartThatTheLibraryMakes)
{
    for (const std::string& block : PageBlocks(BYTES_PAGE, "key"))
    {
        std::istringstream lines(block);
        std::vector<std::string> raised;
        std::string shown;
        for (std::string line; std::getline(lines, line);)
        {
            if (line.compare(0, 6, "raise ") == 0)
                raised.push_back(line.substr(6));
            else if (!line.empty() || !shown.empty())
                shown += line + "\n";
        }
        const SErrorTree tree = Tree(raised);
        const CError& top = *m_database.RetrieveError(tree.problemCode, tree.problemType);
        const CKeyExplained explained(top, Index(top));
        EXPECT_EQ(shown, explained.Text());
        EXPECT_EQ(explained.Key(), tree.stateKey);
        for (const std::string& name : raised)
            m_database.ClearError(Named(m_database, name).ProblemCode(),
                                  Named(m_database, name).ProblemType(), false);
    }
}
