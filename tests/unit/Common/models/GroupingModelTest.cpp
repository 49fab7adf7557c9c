#include "unit/Common/fixtures/GroupingModel.h"
#include "support/Shrinking.h"
#include "unit/Common/models/LinkedDatabase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>

// A database whose errors are linked by hand while it runs, often in one direction only, and whose positions
// are so few that most tops are ties. A plain model groups the same errors pass after pass.

namespace
{

using namespace Faultkeeper;

constexpr int kErrors = 14;
constexpr int kSteps = 120;

enum EAction
{
    eaRaise,       ///< a
    eaClear,       ///< a
    eaLinkUp,      ///< a gets the parent b; b does not know
    eaLinkDown,    ///< a gets a set of b; b does not know
    eaLinkBoth,    ///< as loading does
    eaUnlink,      ///< b is no longer among the parents of a
    eaUpdate,      ///< the four lists
    eaGroup,       ///< the list
    eaGroupStrange ///< the list, in which errors from half of them on stand for copies outside the database
};

struct SStep
{
    EAction action;
    int a = 0;
    int b = 0;
    std::vector<int> list;
};

struct SCase
{
    std::vector<int> positions; ///< by error
    std::vector<SStep> steps;
};

std::string Numbers(const std::vector<int>& numbers)
{
    std::string text;
    for (const int number : numbers)
        text += " " + std::to_string(number);
    return text;
}

std::string Shown(const SCase& failing)
{
    static const char* const kActions[] = {"raise",  "clear",  "link up", "link down",    "link",
                                           "unlink", "update", "group",   "group strange"};
    std::string text = "positions" + Numbers(failing.positions) + "\n";
    for (const SStep& step : failing.steps)
        text += std::string(kActions[step.action]) + " " + std::to_string(step.a) + " " +
                std::to_string(step.b) + Numbers(step.list) + "\n";
    return text;
}

// ---- The model

/// Who knows whom, and who is active and changed.
struct SModel
{
    bool parents[kErrors][kErrors] = {};
    bool triggers[kErrors][kErrors] = {};
    bool active[kErrors] = {};
    bool changed[kErrors] = {};

    bool Related(int asked, int other) const { return triggers[asked][other] || parents[asked][other]; }
};

/// One top for each group of the list.
std::vector<int> TopsOf(const std::vector<int>& errors, const SModel& model,
                        const std::vector<int>& positions)
{
    const auto related = [&](std::size_t candidate, std::size_t member)
    { return model.Related(errors[candidate], errors[member]); };
    const auto position = [&](std::size_t place)
    { return positions[static_cast<std::size_t>(errors[place])]; };
    std::vector<int> tops;
    for (const std::size_t top : Fixtures::TopsByPasses(errors.size(), related, position))
        tops.push_back(errors[top]);
    return tops;
}

// ---- Making cases, and making them smaller

class Maker
{
public:
    /// @param unlinks  take parents away, too? A database whose lists of parents are once handed out trusts
    /// no link
    ///                 that it knows from then on.
    Maker(unsigned seed, bool unlinks) : m_random(seed), m_unlinks(unlinks) {}

    SCase Made()
    {
        SCase made;
        for (int error = 0; error < kErrors; ++error)
            made.positions.push_back(1 + Below(3));
        for (int i = 0; i < kSteps; ++i)
            made.steps.push_back(AnyStep());
        return made;
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    SStep AnyStep()
    {
        static const EAction kActions[] = {eaRaise,  eaRaise,        eaRaise,    eaClear,    eaLinkUp,
                                           eaLinkUp, eaUpdate,       eaLinkDown, eaLinkDown, eaUnlink,
                                           eaGroup,  eaGroupStrange, eaUpdate,   eaLinkBoth};
        SStep step{kActions[Below(14)], Below(kErrors), Below(kErrors), {}};
        if (step.action == eaUnlink && !m_unlinks)
            step.action = eaClear;
        if (step.a == step.b)
            step.b = (step.a + 1) % kErrors;
        if (step.action == eaGroup || step.action == eaGroupStrange)
            for (int count = Below(2 * kErrors); count > 0; --count)
                step.list.push_back(Below(kErrors));
        return step;
    }

    std::mt19937 m_random;
    const bool m_unlinks;
};

std::vector<SCase> Smaller(const SCase& whole)
{
    std::vector<SCase> smaller;
    for (const std::vector<SStep>& steps : Support::Shortened(whole.steps))
        smaller.push_back({whole.positions, steps});
    for (std::size_t step = 0; step < whole.steps.size(); ++step)
    {
        for (const std::vector<int>& list : Support::Shortened(whole.steps[step].list))
        {
            smaller.push_back(whole);
            smaller.back().steps[step].list = list;
        }
    }
    for (std::size_t error = 0; error < whole.positions.size(); ++error)
    {
        if (whole.positions[error] == 1)
            continue;
        smaller.push_back(whole);
        --smaller.back().positions[error];
    }
    return smaller;
}

// ---- Trying them

class GroupingModelTest : public testing::TestWithParam<unsigned>
{
protected:
    /// @return what differs, or ""
    std::string Difference(const SCase& tried)
    {
        Start(tried);
        for (const SStep& step : tried.steps)
        {
            std::string difference = Do(step);
            if (!difference.empty())
                return difference;
        }
        return "";
    }

    void Start(const SCase& tried)
    {
        m_model = SModel();
        m_positions = tried.positions;
        m_linked.Link(THierarchy(kErrors));
        m_linked.Begin(0);
        m_strangers.clear();
        for (int number = 0; number < kErrors; ++number)
            PlaceAt(m_linked.Error(number), tried.positions[static_cast<std::size_t>(number)]);
        for (int number = 0; number < kErrors; ++number)
            m_strangers.push_back(std::make_unique<CError>(m_linked.Error(number)));
        Update(); // no marks are left from the case before
    }

    /// A trigger that is in no list gives an error its position.
    void PlaceAt(CError& error, int position)
    {
        CTriggerSet set(false, 1, eelmDeep, eetsParent);
        for (int more = 1; more < position; ++more)
            set.AddTrigger(&m_outside);
        error.AddTriggerSet(set);
        error.RecalculatePosition();
    }

    std::string Do(const SStep& step)
    {
        switch (step.action)
        {
        case eaRaise:
        case eaClear:
            m_linked.Request({step.a, step.action == eaRaise, true});
            m_model.active[step.a] = step.action == eaRaise;
            m_model.changed[step.a] = true;
            return "";
        case eaUpdate:
            return Update();
        case eaGroup:
        case eaGroupStrange:
            return Group(step.list, step.action == eaGroupStrange);
        default:
            Link(step);
            return "";
        }
    }

    void Link(const SStep& step)
    {
        if (step.action == eaUnlink)
        {
            m_linked.Error(step.a).Parents().remove(&m_linked.Error(step.b));
            m_model.parents[step.a][step.b] = false;
        }
        if (step.action == eaLinkUp)
        {
            m_linked.Error(step.a).AddParent(&m_linked.Error(step.b));
            m_model.parents[step.a][step.b] = true;
        }
        if (step.action == eaLinkDown || step.action == eaLinkBoth)
        {
            CTriggerSet set(true, 1, eelmDeep, eetsParent);
            set.AddTrigger(&m_linked.Error(step.b));
            m_linked.Error(step.a).AddTriggerSet(set);
            m_model.triggers[step.a][step.b] = true;
        }
        if (step.action == eaLinkBoth)
        {
            m_linked.Error(step.b).AddParent(&m_linked.Error(step.a));
            m_model.parents[step.b][step.a] = true;
        }
    }

    std::string Update()
    {
        m_linked.Database().UpdateErrorTree();
        std::string difference;
        for (const bool active : {true, false})
        {
            for (const bool changedOnly : {false, true})
            {
                std::vector<int> errors;
                for (int error = 0; error < kErrors; ++error)
                    if (m_model.active[error] == active && (m_model.changed[error] || !changedOnly))
                        errors.push_back(error);
                const auto& tops = active ? m_linked.Database().ActiveErrors(changedOnly)
                                          : m_linked.Database().InactiveErrors(changedOnly);
                difference += Compared(tops, TopsOf(errors, m_model, m_positions));
            }
        }
        std::fill(std::begin(m_model.changed), std::end(m_model.changed), false);
        return difference;
    }

    /// Links lead to the database's own errors: a copy knows its neighbours, but nobody knows the copy.
    std::string Group(const std::vector<int>& list, bool strange)
    {
        SModel model = m_model;
        std::list<const CError*> errors;
        for (const int number : list)
        {
            const bool copied = strange && number >= kErrors / 2;
            errors.push_back(copied ? Stranger(number) : &m_linked.Error(number));
            for (int other = 0; copied && other < kErrors; ++other)
                model.parents[other][number] = model.triggers[other][number] = false;
        }
        std::list<const CError*> tops;
        m_linked.Database().UpdateErrorTree(errors, tops);
        return Compared(tops, TopsOf(list, model, m_positions));
    }

    const CError* Stranger(int number)
    {
        *m_strangers[static_cast<std::size_t>(number)] = m_linked.Error(number);
        return m_strangers[static_cast<std::size_t>(number)].get();
    }

    static std::string Compared(const std::list<const CError*>& tops, const std::vector<int>& expected)
    {
        std::vector<int> numbers;
        for (const CError* top : tops)
            numbers.push_back(top->ProblemType());
        return numbers == expected ? ""
                                   : "tops are" + Numbers(numbers) + " and not" + Numbers(expected) + "\n";
    }

    typedef Models::THierarchy THierarchy;

    Models::CLinkedDatabase m_linked{kErrors};
    CError m_outside{m_linked.Database()};
    SModel m_model;
    std::vector<int> m_positions;
    std::vector<std::unique_ptr<CError>> m_strangers;
};

TEST_P(GroupingModelTest, TopsAreThoseFoundPassAfterPassWhileLinksComeAndGo)
{
    Maker maker(GetParam(), GetParam() % 2 != 0);
    EXPECT_EQ(Support::SmallestDifference(
                  40, [&] { return maker.Made(); }, Smaller,
                  [this](const SCase& tried) { return Difference(tried); },
                  [](const SCase& failing) { return Shown(failing); }),
              "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, GroupingModelTest, testing::Range(0u, 10u));

} // namespace
