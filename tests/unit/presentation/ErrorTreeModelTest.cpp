#include "unit/Common/view/NumberedErrors.h"
#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <random>

using namespace Faultkeeper;

// Random hierarchies: trees are built and rebuilt, and a plain model of both says what they must hold. The
// model knows errors by number and texts by "P3", "S3", "T3", "s3".

namespace
{

constexpr int kLayers = 4;
constexpr int kErrorsInLayer = 4;
constexpr int kErrors = kLayers * kErrorsInLayer;

struct SModelSet
{
    std::string linking;
    bool triggerTitle = false;
    std::vector<int> triggers;
};

typedef std::vector<std::vector<SModelSet>> THierarchy; // the sets of each error

struct SModelTree
{
    std::string title, shortTitle;
    std::vector<std::string> problems, solutions, lines;
    std::vector<int> codes;

    void TitleOf(int error)
    {
        title = "T" + std::to_string(error);
        shortTitle = "s" + std::to_string(error);
    }

    void ClearTitle()
    {
        title.clear();
        shortTitle.clear();
    }

    void FillFrom(int error)
    {
        if (title.empty())
            title = "T" + std::to_string(error);
        if (shortTitle.empty())
            shortTitle = "s" + std::to_string(error);
        if (problems.empty())
            problems.push_back("P" + std::to_string(error));
        if (solutions.empty())
            solutions.push_back("S" + std::to_string(error));
    }
};

bool HasChildOnly(const std::vector<SModelSet>& sets)
{
    for (const SModelSet& set : sets)
        if (set.linking == "childOnly")
            return true;
    return false;
}

/// The tree of the live state, and its bits behind the index.
class BuildingModel
{
public:
    BuildingModel(const THierarchy& hierarchy, const std::vector<bool>& active, int top)
        : m_hierarchy(hierarchy), m_active(active)
    {
        m_tree.codes.push_back(top);
        if (!Sets(top).empty())
            Walk(top, false);
        m_tree.FillFrom(top);
    }

    const SModelTree& Tree() const { return m_tree; }
    const std::string& Bits() const { return m_bits; }

private:
    const std::vector<SModelSet>& Sets(int error) const
    {
        return m_hierarchy[static_cast<std::size_t>(error)];
    }
    bool Active(int error) const { return m_active[static_cast<std::size_t>(error)]; }

    void Walk(int error, bool nested)
    {
        for (const SModelSet& set : Sets(error))
            for (const int trigger : set.triggers)
                m_bits += Active(trigger) ? '1' : '0';
        for (const SModelSet& set : Sets(error))
        {
            int count = 0;
            for (const int trigger : set.triggers)
                if (Active(trigger))
                {
                    ++count;
                    if (nested)
                        Walk(trigger, true);
                    else
                        Contribute(set, trigger);
                }
            if (!nested && count > 1)
                m_tree.ClearTitle();
        }
    }

    void Contribute(const SModelSet& set, int trigger)
    {
        m_tree.codes.push_back(trigger);
        if (set.linking == "verbose")
            m_tree.problems.push_back("P" + std::to_string(trigger));
        if (set.triggerTitle)
            m_tree.TitleOf(trigger);
        if (set.linking != "shallow" && !HasChildOnly(Sets(trigger)))
            m_tree.solutions.push_back("S" + std::to_string(trigger));
        Walk(trigger, set.linking == "shallow");
    }

    const THierarchy& m_hierarchy;
    const std::vector<bool>& m_active;
    SModelTree m_tree;
    std::string m_bits;
};

/// The tree that a key stands for.
class RebuildingModel
{
public:
    /// @param bits  what follows the index
    RebuildingModel(const THierarchy& hierarchy, const std::string& bits, int top)
        : m_hierarchy(hierarchy), m_bits(bits)
    {
        m_tree.codes.push_back(top);
        m_tree.lines.push_back("+-" + NumberedErrors::Name(top));
        if (!m_hierarchy[static_cast<std::size_t>(top)].empty())
            Walk(top, "+-");
        m_tree.FillFrom(top);
    }

    const SModelTree& Tree() const { return m_tree; }

private:
    void Walk(int error, const std::string& prefix)
    {
        if (m_bits.empty())
            return;
        std::size_t position = 0;
        std::vector<int> selected;
        for (const SModelSet& set : m_hierarchy[static_cast<std::size_t>(error)])
            for (const int trigger : set.triggers)
            {
                if (position < m_bits.size() && m_bits[position] == '1')
                {
                    selected.push_back(trigger);
                    Select(set, trigger);
                }
                ++position;
            }
        if (selected.size() > 1)
            m_tree.ClearTitle();
        const bool usedUp = m_bits.size() <= position;
        m_bits = usedUp ? "" : m_bits.substr(position);
        if (usedUp)
            return;
        for (const int trigger : selected)
        {
            m_tree.lines.push_back(prefix + "--" + NumberedErrors::Name(trigger));
            Walk(trigger, prefix + "--");
        }
    }

    void Select(const SModelSet& set, int trigger)
    {
        m_tree.codes.push_back(trigger);
        if (set.linking == "verbose")
            m_tree.problems.push_back("P" + std::to_string(trigger));
        if (set.triggerTitle)
            m_tree.TitleOf(trigger);
        if (set.linking != "shallow" && !HasChildOnly(m_hierarchy[static_cast<std::size_t>(trigger)]))
            m_tree.solutions.push_back("S" + std::to_string(trigger));
    }

    const THierarchy& m_hierarchy;
    std::string m_bits;
    SModelTree m_tree;
};

std::string Shown(const SModelTree& model)
{
    SErrorTree tree;
    tree.title = model.title;
    tree.shortTitle = model.shortTitle;
    tree.problems = model.problems;
    tree.solutions = model.solutions;
    return Texts(tree);
}

std::string Shown(const std::vector<int>& codes)
{
    std::string text;
    for (const int code : codes)
        text += (text.empty() ? "" : " ") + std::to_string(code);
    return text;
}

/// The bits of a key, index included.
std::string KeyOf(std::string bits)
{
    while (bits.size() % 8 != 0)
        bits += '0';
    std::string key;
    for (std::size_t start = 0; start < bits.size(); start += 4)
        key += "0123456789ABCDEF"[std::stoul(bits.substr(start, 4), nullptr, 2)];
    return key;
}

class ErrorTreeModelTest : public DisplayFixture, public testing::WithParamInterface<unsigned>
{
protected:
    ErrorTreeModelTest() : m_random(GetParam()) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    /// Errors in layers; triggers are taken from the next one.
    void MakeHierarchy()
    {
        for (int error = 0; error < kErrors; ++error)
        {
            std::vector<SModelSet> sets;
            const int nextLayer = (error / kErrorsInLayer + 1) * kErrorsInLayer;
            for (int count = nextLayer < kErrors ? Below(4) : 0; count > 0; --count)
                sets.push_back(AnySet(nextLayer));
            m_hierarchy.push_back(sets);
        }
    }

    SModelSet AnySet(int firstTrigger)
    {
        static const char* const kLinkings[] = {"deep", "deep", "verbose", "shallow", "childOnly"};
        SModelSet set;
        set.linking = kLinkings[Below(5)];
        set.triggerTitle = Below(2) == 0;
        for (int count = Below(4); count > 0; --count)
            set.triggers.push_back(firstTrigger + Below(kErrorsInLayer));
        return set;
    }

    void LoadHierarchy()
    {
        std::vector<Support::STestError> errors;
        for (int error = 0; error < kErrors; ++error)
        {
            std::vector<Support::STestTriggerSet> sets;
            for (const SModelSet& set : m_hierarchy[static_cast<std::size_t>(error)])
                sets.push_back(Set(set.triggers, set.linking, set.triggerTitle ? "trigger" : "parent"));
            errors.push_back(Node(error, sets));
        }
        Load(errors);
    }

    std::vector<bool> ActivateAny()
    {
        std::vector<bool> active;
        std::vector<int> numbers;
        const int share = 1 + Below(4);
        for (int error = 0; error < kErrors; ++error)
        {
            active.push_back(Below(4) < share);
            if (active.back())
                numbers.push_back(error);
        }
        Activate(numbers);
        return active;
    }

    /// @return the key
    std::string CheckBuilt(int top, const std::vector<bool>& active)
    {
        const BuildingModel model(m_hierarchy, active, top);
        std::string ids;
        for (const int code : model.Tree().codes)
            ids += "<e id='" + NumberedErrors::Name(code) + "'/>";
        WritePatterns("<pattern fixedCode='RIGHT'>" + ids + "</pattern>");
        const SErrorTree tree = Tree(top);
        EXPECT_EQ(Texts(tree), Shown(model.Tree()));
        EXPECT_EQ(tree.friendlyCode, "RIGHT");
        EXPECT_EQ(tree.stateKey, KeyOf(IndexBits(top) + model.Bits()));
        return tree.stateKey;
    }

    static std::string IndexBits(int index)
    {
        std::string bits;
        for (int bit = 9; bit >= 0; --bit)
            bits += (index >> bit & 1) != 0 ? '1' : '0';
        return bits;
    }

    void CheckRebuilt(int top, const std::string& key)
    {
        std::string bits;
        for (const char digit : key)
            for (int bit = 3; bit >= 0; --bit)
                bits += (std::stoi(std::string(1, digit), nullptr, 16) >> bit & 1) != 0 ? '1' : '0';
        const RebuildingModel model(m_hierarchy, bits.substr(10), top);
        SErrorTree tree;
        std::vector<std::string> lines;
        std::vector<std::pair<int, int>> codes;
        CErrorPresentation::RegenerateErrorTree(key, *m_database, m_reader, tree, lines, codes, false);
        EXPECT_EQ(Texts(tree), Shown(model.Tree()));
        EXPECT_EQ(Joined(lines), Joined(model.Tree().lines));
        EXPECT_EQ(Numbers(codes), Shown(model.Tree().codes));
    }

    /// A key of any bits for the same top error.
    std::string AnyKey(int top)
    {
        std::string bits = IndexBits(top);
        for (int count = 2 + 4 * Below(20); count > 0; --count)
            bits += Below(3) == 0 ? '0' : '1';
        return KeyOf(bits);
    }

    std::mt19937 m_random;
    THierarchy m_hierarchy;
};

TEST_P(ErrorTreeModelTest, TreesAreBuiltAndRebuiltAsTheModelSays)
{
    MakeHierarchy();
    LoadHierarchy();
    for (int round = 0; round < 20 && !HasFailure(); ++round)
    {
        const int top = Below(kErrors);
        const std::string key = CheckBuilt(top, ActivateAny());
        ActivateAny(); // the live state has moved on
        CheckRebuilt(top, key);
        CheckRebuilt(top, AnyKey(top));
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, ErrorTreeModelTest, testing::Range(0u, 25u));

} // namespace
