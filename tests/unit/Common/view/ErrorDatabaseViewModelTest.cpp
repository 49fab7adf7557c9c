#include "support/Shrinking.h"
#include "unit/Common/models/ViewsTrial.h"

#include <gtest/gtest.h>

#include <map>

// One owner and one reader do random things to one table, and each asks it what it may and what it may not. A
// plain model follows both: the owner's is a second copy of the table, the reader's is the rule of what a
// synchronisation replays, spelt out. What fails is shown as the shortest script that fails.

namespace
{

using namespace Models;
using Faultkeeper::eViewOwner;
using Faultkeeper::eViewReader;

constexpr int kRounds = 4;
constexpr int kOperations = 400;

/// Nobody is replaced, and the lock is free.
SStage Calm()
{
    SStage stage;
    stage.errors = 8;
    stage.views = {eViewOwner, eViewReader};
    stage.restless = 0;
    stage.busyEach = 0;
    return stage;
}

/// The owner loads all errors and declares the table ready.
TScript Beginning()
{
    TScript script(2);
    script[0].kind = eoLoad;
    script[1].kind = eoDeclareReady;
    script[1].flag = true;
    return script;
}

class ErrorDatabaseViewModelTest : public testing::TestWithParam<unsigned>
{
protected:
    CScriptMaker m_maker{GetParam(), Calm()};
    CViewsTrial m_trial{Calm()};
};

TEST_P(ErrorDatabaseViewModelTest, OwnerAndReaderDoWhatTheModelDoes)
{
    EXPECT_EQ(Support::SmallestDifference(
                  kRounds, [this] { return m_maker.Made(kOperations, Beginning()); }, SmallerScripts,
                  [this](const TScript& script) { return m_trial.Difference(script); },
                  [](const TScript& failing) { return Shown(failing); }),
              "");
}

TEST_P(ErrorDatabaseViewModelTest, ScriptsAskTheOwnerForAllThatItMayAndMayNotRetrieve)
{
    const TScript script = m_maker.Made(kRounds * kOperations, Beginning());
    ASSERT_EQ(m_trial.Difference(script), "");
    std::map<EOperation, std::set<std::string>> answers; // of the owner
    for (std::size_t number = 0; number < script.size(); ++number)
        if (script[number].view == 0)
            answers[script[number].kind].insert(m_trial.Answers()[number]);
    EXPECT_GT(answers[eoRetrieveAll].size(), 3u) << "the table as it changes";
    EXPECT_GT(answers[eoRetrieveAt].size(), 4u) << "identifiers, and that there is none";
    EXPECT_EQ(answers[eoRetrieveDetails].size(), 1u) << "nothing, whatever the error";
    EXPECT_EQ(answers[eoRetrieveIndex].size(), 1u) << "nothing, whatever the error";
    EXPECT_EQ(answers[eoAskReady].size(), 2u) << "yes and no";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ErrorDatabaseViewModelTest, testing::Range(0u, 20u));

} // namespace
