#include "support/EveryCase.h"
#include "unit/Common/models/LinkedDatabase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

// All small hierarchies, in every state, under every request. Links lead from earlier to later errors only,
// which covers every hierarchy without a cycle but for the naming of its errors, and each list of parents is
// tried in every order, because the order is that in which parents follow.
//
// That takes about a minute. Where code runs slowly a threshold is left at 0 where nobody looks at it: in
// sets that are not automatic and in those that are empty; and of two sets of one error only one order is
// tried. FAULTKEEPER_TEST_FULL in the environment, 0 or 1, says which it is to be.

namespace
{

using Models::SNode;
using Models::SSet;
using Models::THierarchy;

typedef std::vector<SSet> TSets;
typedef std::function<void(const THierarchy&)> TVisit;

constexpr int kLargestThreshold = 3;

bool Full()
{
    return Support::EveryCase(FAULTKEEPER_TEST_EVERY_CASE);
}

/// All sets of some of the errors whose bits are set.
TSets SetsOf(unsigned errors, int firstThreshold = 0, int lastThreshold = kLargestThreshold)
{
    TSets sets;
    for (unsigned chosen = 0; chosen <= errors; ++chosen)
    {
        if ((chosen & ~errors) != 0)
            continue;
        SSet set;
        for (int error = 0; chosen >> error != 0; ++error)
            if ((chosen >> error & 1U) != 0)
                set.triggers.push_back(error);
        for (const bool automatic : {true, false})
        {
            const bool looked = automatic && chosen != 0;
            for (set.needed = firstThreshold;
                 set.needed <= (looked || Full() ? lastThreshold : firstThreshold); ++set.needed)
            {
                set.automatic = automatic;
                sets.push_back(set);
            }
        }
    }
    return sets;
}

/// No set, or one of these.
std::vector<TSets> OneSetEach(const TSets& sets)
{
    std::vector<TSets> choices{{}};
    for (const SSet& set : sets)
        choices.push_back({set});
    return choices;
}

/// No set, or one or two of these.
std::vector<TSets> UpToTwoSetsEach(const TSets& sets)
{
    std::vector<TSets> choices = OneSetEach(sets);
    for (std::size_t first = 0; first < sets.size(); ++first)
    {
        for (std::size_t second = Full() ? 0 : first; second < sets.size(); ++second)
            choices.push_back({sets[first], sets[second]});
    }
    return choices;
}

/// Visits the hierarchy with the parents of the errors from `child` on in every order.
void ForEveryOrder(THierarchy& hierarchy, std::size_t child, const TVisit& visit)
{
    if (child == hierarchy.size())
        return visit(hierarchy);
    std::vector<int>& parents = hierarchy[child].parents;
    std::sort(parents.begin(), parents.end());
    do
        ForEveryOrder(hierarchy, child + 1, visit);
    while (std::next_permutation(parents.begin(), parents.end()));
}

/// Visits every hierarchy whose errors take their sets from these, in every order of parents.
/// @param choices  for each error
void ForEveryHierarchy(const std::vector<std::vector<TSets>>& choices, THierarchy& hierarchy,
                       const TVisit& visit)
{
    if (hierarchy.size() == choices.size())
    {
        THierarchy linked(hierarchy);
        LinkParents(linked);
        return ForEveryOrder(linked, 0, visit);
    }
    for (const TSets& sets : choices[hierarchy.size()])
    {
        hierarchy.push_back({sets, {}});
        ForEveryHierarchy(choices, hierarchy, visit);
        hierarchy.pop_back();
    }
}

class ExhaustivePropagationTest : public testing::Test
{
protected:
    /// @param count  how many hierarchies there are, orders of parents included
    void CompareAll(const std::vector<std::vector<TSets>>& choices, long count)
    {
        THierarchy hierarchy;
        ForEveryHierarchy(choices, hierarchy, [this](const THierarchy& each) { CompareStates(each); });
        RecordProperty("requests", std::to_string(m_requests));
        EXPECT_EQ(m_hierarchies, m_failed ? m_hierarchies : count);
    }

    void CompareStates(const THierarchy& hierarchy)
    {
        if (m_failed)
            return; // one is enough, and the first ones have the fewest links
        ++m_hierarchies;
        m_database.Link(hierarchy);
        Models::CPropagation model(hierarchy);
        for (unsigned active = 0; active >> hierarchy.size() == 0; ++active)
        {
            for (int error = 0; error < static_cast<int>(hierarchy.size()); ++error)
            {
                CompareRequest(hierarchy, model, active, {error, true, false});
                CompareRequest(hierarchy, model, active, {error, true, true});
                CompareRequest(hierarchy, model, active, {error, false, false});
                CompareRequest(hierarchy, model, active, {error, false, true});
            }
        }
    }

    void CompareRequest(const THierarchy& hierarchy, Models::CPropagation& model, unsigned active,
                        const Models::SRequest& request)
    {
        if (m_failed)
            return;
        ++m_requests;
        m_database.Begin(active);
        m_database.Request(request);
        model.Begin(active);
        model.Request(request);
        m_failed = !m_database.Shows(model.Outcome());
        if (m_failed)
            FAIL() << Shown(hierarchy) << "in state " << active << ", " << Shown(request) << "\nis      "
                   << Shown(m_database.Outcome()) << "\nand not " << Shown(model.Outcome());
    }

    Models::CLinkedDatabase m_database{4};
    bool m_failed = false;
    long m_hierarchies = 0;
    long m_requests = 0;
};

TEST_F(ExhaustivePropagationTest, FourErrorsWithOneSetEachFollowTheRules)
{
    const std::vector<TSets> bottom = OneSetEach({});
    CompareAll({bottom, OneSetEach(SetsOf(0b1)), OneSetEach(SetsOf(0b11)), OneSetEach(SetsOf(0b111))},
               Full() ? 87153 : 16272);
}

TEST_F(ExhaustivePropagationTest, ThreeErrorsWithUpToTwoSetsEachFollowTheRules)
{
    CompareAll({OneSetEach({}), UpToTwoSetsEach(SetsOf(0b1)), UpToTwoSetsEach(SetsOf(0b11))},
               Full() ? 579505 : 15531);
}

/// Files may link errors in a circle.
TEST_F(ExhaustivePropagationTest, ThreeErrorsThatTriggerEachOtherInAnyWayFollowTheRules)
{
    const std::vector<TSets> choices = OneSetEach(SetsOf(0b111, 1, Full() ? 2 : 1));
    CompareAll({choices, choices, choices}, Full() ? 268241 : 34317);
}

} // namespace
