#pragma once

#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// What a rebuild fills.
struct SRebuilt
{
    Faultkeeper::SErrorTree tree;
    std::vector<std::string> lines;
    std::vector<std::pair<int, int>> codes;
};

inline bool operator==(const SRebuilt& left, const SRebuilt& right)
{
    return Printed(left.tree) == Printed(right.tree) && left.lines == right.lines &&
           left.codes == right.codes;
}

inline std::ostream& operator<<(std::ostream& out, const SRebuilt& rebuilt)
{
    return out << Printed(rebuilt.tree) << Joined(rebuilt.lines) << Numbers(rebuilt.codes);
}

class RebuildingFixture : public DisplayFixture
{
protected:
    void Rebuild(const std::string& key, SRebuilt& rebuilt, bool plain = false)
    {
        Faultkeeper::CErrorPresentation::RegenerateErrorTree(key, *m_database, m_reader, rebuilt.tree,
                                                             rebuilt.lines, rebuilt.codes, plain);
    }

    SRebuilt Rebuilt(const std::string& key, bool plain = false)
    {
        SRebuilt rebuilt;
        Rebuild(key, rebuilt, plain);
        return rebuilt;
    }

    std::string Codes(const std::string& key) { return Numbers(Rebuilt(key).codes); }
    std::string TextsOf(const std::string& key) { return Texts(Rebuilt(key).tree); }

    /// Something in every output, to see that it stays or is appended to.
    static SRebuilt Filled()
    {
        SRebuilt rebuilt;
        rebuilt.tree.problemCode = 0x123;
        rebuilt.tree.problemType = 7;
        rebuilt.tree.stateKey = "KEY";
        rebuilt.tree.friendlyCode = "CODE";
        rebuilt.tree.raisedTime = rebuilt.tree.clearedTime = 77;
        rebuilt.tree.counter1 = rebuilt.tree.counter2 = 78;
        rebuilt.lines = {"line"};
        rebuilt.codes = {{0x40C1B, 20}};
        return rebuilt;
    }
};
