#include "support/Shrinking.h"
#include "unit/Common/models/ViewsTrial.h"

#include <gtest/gtest.h>

// Restless owners: new ones zero the table under the old ones and under the displays, load it again or not,
// declare it ready or not, retrieve from it, and somebody sits on the lock every now and then. A model
// follows the table byte by byte and each answer. What fails is shown as the shortest script that fails.

namespace
{

using namespace Models;
using Faultkeeper::eViewOwner;
using Faultkeeper::eViewReader;

constexpr int kRounds = 4;
constexpr int kOperations = 300;

SStage Restless()
{
    SStage stage;
    stage.errors = 6;
    stage.views = {eViewOwner, eViewOwner, eViewOwner, eViewReader, eViewReader};
    stage.restless = 3;
    stage.busyEach = 8;
    return stage;
}

class ViewUpheavalModelTest : public testing::TestWithParam<unsigned>
{
protected:
    /// Does the second owner, which has not made the table, retrieve a raised error from it?
    bool SecondOwnerRetrievesARaisedError(const TScript& script)
    {
        m_trial.Difference(script);
        for (std::size_t number = 0; number < m_trial.Answers().size(); ++number)
            if (script[number].kind == eoRetrieveAll && script[number].view == 1 &&
                m_trial.Answers()[number].find("flags 1") != std::string::npos)
                return true;
        return false;
    }

    CScriptMaker m_maker{GetParam(), Restless()};
    CViewsTrial m_trial{Restless()};
};

TEST_P(ViewUpheavalModelTest, TableAndDisplaysFollowTheModelThroughEveryUpheaval)
{
    EXPECT_EQ(Support::SmallestDifference(
                  kRounds, [this] { return m_maker.Made(kOperations, {}); }, SmallerScripts,
                  [this](const TScript& script) { return m_trial.Difference(script); },
                  [](const TScript& failing) { return Shown(failing); }),
              "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, ViewUpheavalModelTest, testing::Range(0u, 16u));

class ViewScriptShorteningTest : public ViewUpheavalModelTest
{
};

TEST_P(ViewScriptShorteningTest, AFailureIsShownAsAScriptOfAFewOperations)
{
    const auto found = [this](const TScript& script) { return SecondOwnerRetrievesARaisedError(script); };
    TScript script;
    while (!found(script))
        script = m_maker.Made(kOperations / 3, {});
    const TScript shortest = Support::Shrunk(script, SmallerScripts, found);
    // One loads and restores, or declares the table ready and raises, perhaps after it has seen that another
    // one had declared it ready; then the second one retrieves.
    EXPECT_GE(shortest.size(), 3u) << Shown(shortest);
    EXPECT_LE(shortest.size(), 5u) << Shown(shortest);
    for (const SOperation& operation : shortest)
    {
        EXPECT_FALSE(operation.busy) << Shown(shortest);
        EXPECT_LE(operation.items.size(), 1u) << Shown(shortest);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ViewScriptShorteningTest, testing::Range(0u, 4u));

} // namespace
