#pragma once

#include <string>
#include <vector>

/// Hierarchies as tests write them down, and what requests do to them, step by step. Errors are numbers.
namespace Models
{

struct SSet
{
    bool automatic = true;
    int needed = 1;
    std::vector<int> triggers;
};

/// One error. Its parents need not hold it in a set, nor the other way round.
struct SNode
{
    std::vector<SSet> sets;
    std::vector<int> parents;
};

typedef std::vector<SNode> THierarchy;

struct SRequest
{
    int error = 0;
    bool raise = true;
    bool silent = false;
};

/// What can be seen of the errors after a request.
struct SOutcome
{
    std::vector<char> active;
    std::vector<char> changed;
    std::vector<int>
        heard; ///< by the listener, in order: number + 1 if it was raised, the negative if cleared

    bool operator==(const SOutcome& other) const
    {
        return active == other.active && changed == other.changed && heard == other.heard;
    }
};

/// Adds each error to the parents of the triggers in its sets, in order, as loading does.
void LinkParents(THierarchy& hierarchy);

/// One line each: "0: parents 1 2", "1: auto 2 of {0 3}, manual 1 of {}; parents".
std::string Shown(const THierarchy& hierarchy);
/// "raise 3 silently"
std::string Shown(const SRequest& request);
/// "active 1 2; changed 2; heard +2 +1"
std::string Shown(const SOutcome& outcome);

/// Raising, clearing and what follows from them, spelt out and without haste.
class CPropagation
{
public:
    explicit CPropagation(const THierarchy& hierarchy);

    /// Makes exactly those errors active whose bit is set; nothing is changed and nothing heard any more.
    void Begin(unsigned active);
    void Request(const SRequest& request);
    /// Forgets what was heard.
    void Forget() { m_outcome.heard.clear(); }
    const SOutcome& Outcome() const { return m_outcome; }

private:
    void Raise(int error, bool silent);
    void Clear(int error, bool silent);
    void ChildRaised(int parent, int child);
    void ChildCleared(int parent, int child);
    bool Raised(const SSet& set, int child) const;
    bool Cleared(const SSet& set, int child) const;
    const SNode& Node(int error) const { return m_hierarchy[static_cast<std::size_t>(error)]; }
    char& Active(int error) { return m_outcome.active[static_cast<std::size_t>(error)]; }

    const THierarchy& m_hierarchy; // borrowed
    SOutcome m_outcome;
};

} // namespace Models
