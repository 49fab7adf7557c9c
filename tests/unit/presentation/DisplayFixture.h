#pragma once

#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorTree.h>
#include <Faultkeeper/StatusTable.h>

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A trigger set over errors given by their numbers.
Support::STestTriggerSet Set(const std::vector<int>& triggers, const std::string& errorLinking = "",
                             const std::string& titleSource = "");

/// The error of that number, visible and of high severity, with the texts "P3", "S3", "s3" (short) and "T3".
Support::STestError Node(int number, const std::vector<Support::STestTriggerSet>& sets = {});

/// All nineteen fields of a tree:
///     40C1B:0 severity 2 visible beep
///     title [T0] short [s0]
///     problems [P0]
///     solutions [S1][S2]
///     raised 0 cleared 0 counters 0 0
///     key [0030] code []
std::string Printed(const Faultkeeper::SErrorTree& tree);

/// The third and fourth line of that, and the titles: "T0|s0|P0|S1 S2".
std::string Texts(const Faultkeeper::SErrorTree& tree);

/// "0 1 2": the numbers of the errors.
std::string Numbers(const std::vector<std::pair<int, int>>& codes);

/// One line each.
std::string Joined(const std::vector<std::string>& lines);

/// A display process in a fresh directory: a database, a reading view of the table that holds its errors in
/// the order of their definition, and the owner that fills the table.
class DisplayFixture : public Support::SharedTableTest
{
protected:
    /// Loads the errors into a database and the table, and synchronises the reader. Once a test.
    void Load(const std::vector<Support::STestError>& errors);

    /// Writes the pattern file.
    /// @param patterns  what stands inside the element "Patterns"
    void WritePatterns(const std::string& patterns) const;

    /// Makes exactly these errors active in the database.
    void Activate(const std::vector<int>& numbers);

    /// The error of that number.
    const Faultkeeper::CError* Error(int number) const;

    /// The trees of the listed errors. The pattern file is read anew.
    std::vector<Faultkeeper::SErrorTree> Trees(const std::vector<int>& numbers,
                                               bool useTextKeys = false) const;
    Faultkeeper::SErrorTree Tree(int number, bool useTextKeys = false) const;

    /// One record of the table itself; a change is seen by the reader at the next Synchronise().
    Faultkeeper::SErrorEntry& Record(int index);
    void Synchronise();

    std::unique_ptr<Faultkeeper::CErrorDatabase> m_database;
    Faultkeeper::CErrorDatabaseView m_owner{true, Faultkeeper::eViewOwner};
    Faultkeeper::CErrorDatabaseView m_reader{false, Faultkeeper::eViewReader};
};
