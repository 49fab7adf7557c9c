#include "store/TransitionCauses.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include "common/text/ErrorNames.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <gtest/gtest.h>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{

const std::string kLeaf = "Positioning:GPS:No Data:1";
const std::string kOther = "Positioning:GPS:No Data:2";
const std::string kMiddle = "Positioning:GPS:No Data:3";
const std::string kSide = "Positioning:GPS:No Data:4";
const std::string kTop = "Positioning:GPS:No Data:5";

std::string Mode(const CError& error)
{
    return std::to_string(error.ProblemType());
}

/// Writes each change down: the failure mode, + or -, and that of the cause.
class TransitionCauses : public testing::Test, public CErrorDbChanged
{
protected:
    void Load(const Support::CConfigurationBuilder& builder)
    {
        builder.WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
        m_database->SetCallback(this);
        m_causes = std::make_unique<CTransitionCauses>(*m_database);
    }

    std::string Request(int type, bool raised)
    {
        m_text.clear();
        m_causes->Begin();
        const int code = m_database->GetErrorList().front().ProblemCode();
        if (raised)
            m_database->RaiseError(code, type, false);
        else
            m_database->ClearError(code, type, false);
        return m_text;
    }

    void ErrorRaised(int code, int type) override { Note(code, type, true); }
    void ErrorCleared(int code, int type) override { Note(code, type, false); }

    void Note(int code, int type, bool raised)
    {
        const CError* const cause = m_causes->CauseOf(code, type, raised);
        m_text += std::to_string(type) + (raised ? "+" : "-") + (cause == nullptr ? "" : Mode(*cause)) + " ";
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
    std::unique_ptr<CTransitionCauses> m_causes;
    std::string m_text;
};

TEST_F(TransitionCauses, WhatWasRequestedHasNone)
{
    Load(Support::CConfigurationBuilder().Leaf(kLeaf));
    EXPECT_EQ(Request(1, true), "1+ ");
    EXPECT_EQ(Request(1, false), "1- ");
}

TEST_F(TransitionCauses, EachLevelIsCausedByTheOneBelow)
{
    Load(Support::CConfigurationBuilder().Leaf(kLeaf).Parent(kMiddle, {kLeaf}).Parent(kTop, {kMiddle}));
    EXPECT_EQ(Request(1, true), "1+ 3+1 5+3 ");
    EXPECT_EQ(Request(1, false), "1- 3-1 5-3 ");
}

TEST_F(TransitionCauses, ASecondParentIsCausedByTheSameChild)
{
    Load(Support::CConfigurationBuilder()
             .Leaf(kLeaf)
             .Parent(kMiddle, {kLeaf})
             .Parent(kTop, {kMiddle})
             .Parent(kSide, {kLeaf}));
    EXPECT_EQ(Request(1, true), "1+ 3+1 5+3 4+1 ");
}

TEST_F(TransitionCauses, AParentThatIsReachedTwiceIsCausedByTheChildThatSatisfiedIt)
{
    // The top wants two of its triggers: the middle alone is not enough when it is raised, the leaf counts,
    // too.
    Load(Support::CConfigurationBuilder()
             .Leaf(kLeaf)
             .Leaf(kOther)
             .Parent(kMiddle, {kLeaf})
             .Parent(kTop, {kMiddle, kLeaf}, 2));
    EXPECT_EQ(Request(1, true), "1+ 3+1 5+3 ");
}

} // namespace
