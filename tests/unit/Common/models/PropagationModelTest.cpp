#include "support/Shrinking.h"
#include "unit/Common/models/LinkedDatabase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

// Random hierarchies of a dozen errors, linked by hand in every way there is: several sets, triggers listed
// twice, links that only one side knows, circles, thresholds below one. What fails is shown as small as it
// can be made.

namespace
{

using Models::SNode;
using Models::SRequest;
using Models::SSet;
using Models::THierarchy;

constexpr int kErrors = 12;
constexpr int kRequests = 150;

struct SCase
{
    THierarchy hierarchy;
    std::vector<SRequest> requests;
};

std::string Shown(const SCase& failing)
{
    std::string text = Shown(failing.hierarchy);
    for (const SRequest& request : failing.requests)
        text += Shown(request) + "\n";
    return text;
}

// ---- Making cases

class Maker
{
public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    SCase Made()
    {
        SCase made;
        made.hierarchy.resize(kErrors);
        const int widest = 1 + Below(4);
        for (SNode& node : made.hierarchy)
            for (int sets = Below(3); sets > 0; --sets)
                node.sets.push_back(AnySet(widest));
        LinkParents(made.hierarchy);
        for (SNode& node : made.hierarchy)
            Disturb(node.parents);
        for (int i = 0; i < kRequests; ++i)
            made.requests.push_back({Below(kErrors), Below(2) == 0, Below(4) == 0});
        return made;
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    SSet AnySet(int widest)
    {
        SSet set;
        set.automatic = Below(6) != 0;
        set.needed = Below(10) == 0 ? -1 : Below(4);
        for (int count = Below(widest + 1); count > 0; --count)
            set.triggers.push_back(Below(kErrors));
        return set;
    }

    /// Another order, and now and then a parent too many or too few.
    void Disturb(std::vector<int>& parents)
    {
        std::shuffle(parents.begin(), parents.end(), m_random);
        if (Below(5) == 0 && !parents.empty())
            parents.pop_back();
        if (Below(5) == 0)
            parents.push_back(Below(kErrors));
    }

    std::mt19937 m_random;
};

// ---- Making them smaller

/// The numbers without one error; those behind it move up.
void Forget(std::vector<int>& numbers, int error)
{
    numbers.erase(std::remove(numbers.begin(), numbers.end(), error), numbers.end());
    for (int& number : numbers)
        number -= number > error ? 1 : 0;
}

SCase Without(const SCase& whole, int error)
{
    SCase rest(whole);
    rest.hierarchy.erase(rest.hierarchy.begin() + error);
    for (SNode& node : rest.hierarchy)
    {
        Forget(node.parents, error);
        for (SSet& set : node.sets)
            Forget(set.triggers, error);
    }
    rest.requests.clear();
    for (SRequest request : whole.requests)
    {
        if (request.error == error)
            continue;
        request.error -= request.error > error ? 1 : 0;
        rest.requests.push_back(request);
    }
    return rest;
}

/// The case with a node replaced.
SCase With(const SCase& whole, std::size_t error, const SNode& node)
{
    SCase changed(whole);
    changed.hierarchy[error] = node;
    return changed;
}

void AppendSmallerNodes(const SCase& whole, std::size_t error, std::vector<SCase>& smaller)
{
    const SNode& node = whole.hierarchy[error];
    for (const std::vector<SSet>& sets : Support::Shortened(node.sets))
        smaller.push_back(With(whole, error, {sets, node.parents}));
    for (const std::vector<int>& parents : Support::Shortened(node.parents))
        smaller.push_back(With(whole, error, {node.sets, parents}));
    for (std::size_t set = 0; set < node.sets.size(); ++set)
    {
        if (node.sets[set].needed > 1)
        {
            SNode changed(node);
            --changed.sets[set].needed;
            smaller.push_back(With(whole, error, changed));
        }
        for (const std::vector<int>& triggers : Support::Shortened(node.sets[set].triggers))
        {
            SNode changed(node);
            changed.sets[set].triggers = triggers;
            smaller.push_back(With(whole, error, changed));
        }
    }
}

std::vector<SCase> Smaller(const SCase& whole)
{
    std::vector<SCase> smaller;
    for (const std::vector<SRequest>& requests : Support::Shortened(whole.requests))
        smaller.push_back({whole.hierarchy, requests});
    for (int error = 0; error < static_cast<int>(whole.hierarchy.size()); ++error)
        smaller.push_back(Without(whole, error));
    for (std::size_t error = 0; error < whole.hierarchy.size(); ++error)
        AppendSmallerNodes(whole, error, smaller);
    return smaller;
}

// ---- Trying them

class PropagationModelTest : public testing::TestWithParam<unsigned>
{
protected:
    /// @return what differs, or ""
    std::string Difference(const SCase& tried)
    {
        m_database.Link(tried.hierarchy);
        m_database.Begin(0);
        Models::CPropagation model(tried.hierarchy);
        for (const SRequest& request : tried.requests)
        {
            m_database.Forget();
            model.Forget();
            m_database.Request(request);
            model.Request(request);
            if (!m_database.Shows(model.Outcome()))
                return "after " + Shown(request) + "\nis      " + Shown(m_database.Outcome()) + "\nand not " +
                       Shown(model.Outcome());
        }
        return "";
    }

    Models::CLinkedDatabase m_database{kErrors};
};

TEST_P(PropagationModelTest, ErrorsFollowRequestsHoweverTheyAreLinked)
{
    Maker maker(GetParam());
    EXPECT_EQ(Support::SmallestDifference(
                  60, [&] { return maker.Made(); }, Smaller,
                  [this](const SCase& tried) { return Difference(tried); },
                  [](const SCase& failing) { return Shown(failing); }),
              "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, PropagationModelTest, testing::Range(0u, 10u));

/// Does any error become active that nobody asked for?
bool AnyoneFollows(const SCase& tried)
{
    Models::CPropagation model(tried.hierarchy);
    for (const SRequest& request : tried.requests)
    {
        model.Forget();
        model.Request(request);
        if (model.Outcome().heard.size() > 1 && request.raise)
            return true;
    }
    return false;
}

TEST_P(PropagationModelTest, AFailureIsShownAsSmallAsItCanBe)
{
    Maker maker(GetParam());
    SCase found = maker.Made();
    while (!AnyoneFollows(found))
        found = maker.Made();
    const SCase smallest = Support::Shrunk(found, Smaller, AnyoneFollows); // a parent, a child and a request
    EXPECT_EQ(smallest.hierarchy.size(), 2u) << Shown(smallest);
    EXPECT_EQ(smallest.requests.size(), 1u) << Shown(smallest);
    std::size_t links = 0;
    for (const SNode& node : smallest.hierarchy)
        links += node.parents.size() + node.sets.size();
    EXPECT_EQ(links, 2u) << Shown(smallest);
}

} // namespace
