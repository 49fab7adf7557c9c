#pragma once

#include "support/FreshDirectory.h"
#include "unit/Common/models/Hierarchy.h"
#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <utility>
#include <vector>

namespace Models
{

/// A database of numbered errors, loaded without links, that are linked by hand as often as one likes.
class CLinkedDatabase : public Faultkeeper::CErrorDbChanged
{
public:
    /// @param errors  how many, at most 21: the failure mode is the error's number
    explicit CLinkedDatabase(int errors) : m_database(NumberedErrors::Written(m_directory.Prefix(), errors))
    {
        m_blank = m_database.GetErrorList();
        m_database.SetCallback(this);
    }

    Faultkeeper::CErrorDatabase& Database() { return m_database; }

    /// The database's own error. Its list is constant for its users only.
    Faultkeeper::CError& Error(int number)
    {
        return const_cast<Faultkeeper::CError&>(m_database.GetErrorList()[static_cast<std::size_t>(number)]);
    }

    /// Takes all links away and makes these.
    void Link(const THierarchy& hierarchy)
    {
        for (std::size_t number = 0; number < m_blank.size(); ++number)
            Error(static_cast<int>(number)) = m_blank[number];
        for (std::size_t number = 0; number < hierarchy.size(); ++number)
        {
            Faultkeeper::CError& error = Error(static_cast<int>(number));
            for (const SSet& set : hierarchy[number].sets)
                error.AddTriggerSet(Made(set));
            for (const int parent : hierarchy[number].parents)
                error.AddParent(&Error(parent));
        }
        m_linked = hierarchy.size();
    }

    /// As CPropagation::Begin.
    void Begin(unsigned active)
    {
        for (std::size_t number = 0; number < m_linked; ++number)
        {
            Faultkeeper::CError& error = Error(static_cast<int>(number));
            if ((active >> number & 1U) != 0)
                error.Raise(true);
            else
                error.Clear(true);
            error.Changed(false);
        }
        m_heard.clear();
    }

    void Request(const SRequest& request)
    {
        const int code = NumberedErrors::Code(0); // the same for all: they differ in failure mode
        if (request.raise)
            m_database.RaiseError(code, request.error, request.silent);
        else
            m_database.ClearError(code, request.error, request.silent);
    }

    void Forget() { m_heard.clear(); }

    /// Does what can be seen equal this?
    bool Shows(const SOutcome& outcome) const
    {
        const std::vector<Faultkeeper::CError>& errors = m_database.GetErrorList();
        for (std::size_t number = 0; number < m_linked; ++number)
        {
            if (errors[number].Active() != (outcome.active[number] != 0) ||
                errors[number].Changed() != (outcome.changed[number] != 0))
                return false;
        }
        return m_heard == outcome.heard;
    }

    SOutcome Outcome() const
    {
        SOutcome outcome;
        for (std::size_t number = 0; number < m_linked; ++number)
        {
            outcome.active.push_back(m_database.GetErrorList()[number].Active() ? 1 : 0);
            outcome.changed.push_back(m_database.GetErrorList()[number].Changed() ? 1 : 0);
        }
        outcome.heard = m_heard;
        return outcome;
    }

    void ErrorRaised(int, int problemType) override { m_heard.push_back(problemType + 1); }
    void ErrorCleared(int, int problemType) override { m_heard.push_back(-(problemType + 1)); }

private:
    Faultkeeper::CTriggerSet Made(const SSet& set)
    {
        Faultkeeper::CTriggerSet made(set.automatic, set.needed, Faultkeeper::eelmDeep,
                                      Faultkeeper::eetsParent);
        for (const int trigger : set.triggers)
            made.AddTrigger(&Error(trigger));
        return made;
    }

    Support::CFreshDirectory m_directory;
    Faultkeeper::CErrorDatabase m_database;
    std::vector<Faultkeeper::CError> m_blank; // the errors as loaded
    std::size_t m_linked = 0;
    std::vector<int> m_heard;
};

} // namespace Models
