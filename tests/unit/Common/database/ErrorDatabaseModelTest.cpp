#include <Faultkeeper/ErrorDatabase.h>

#include <Faultkeeper/ErrorDbChanged.h>

#include "support/CapturedOutput.h"
#include "unit/Common/fixtures/Configurations.h"
#include "unit/Common/fixtures/HierarchyModel.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace Faultkeeper;
using Fixtures::Lines;

/// A random hierarchy, loaded from files, beside a model of it.
class ErrorDatabaseModelTest : public testing::TestWithParam<unsigned>, public CErrorDbChanged
{
protected:
    ErrorDatabaseModelTest()
        : m_random(GetParam()), m_definitions(Fixtures::RandomDefinitions(m_random)), m_model(m_definitions),
          m_configuration(BuilderOf(m_definitions)), m_database(m_configuration.Path())
    {
        m_database.SetCallback(this);
    }

    static Support::CConfigurationBuilder BuilderOf(const std::vector<Support::STestError>& definitions)
    {
        Support::CConfigurationBuilder builder;
        for (const Support::STestError& error : definitions)
            builder.Add(error);
        return builder;
    }

    void ErrorRaised(int problemCode, int problemType) override { Hear("raised ", problemCode, problemType); }
    void ErrorCleared(int problemCode, int problemType) override
    {
        Hear("cleared ", problemCode, problemType);
    }

    void Hear(const std::string& what, int problemCode, int problemType)
    {
        m_heard.push_back(what + Fixtures::NameOf(*m_database.RetrieveError(problemCode, problemType)));
    }

    /// Sends one request to both and compares what the listener hears and the state of every error.
    void CompareRequest()
    {
        const Lines names = m_model.Names();
        const std::string& name = names[m_random() % names.size()];
        const bool silent = m_random() % 3 == 0;
        m_heard.clear();
        if (m_random() % 2 == 0)
        {
            Fixtures::Raise(m_database, name, silent);
            m_model.Raise(name, silent);
        }
        else
        {
            Fixtures::Clear(m_database, name, silent);
            m_model.Clear(name, silent);
        }
        ASSERT_EQ(m_heard, m_model.Heard()) << name << (silent ? " silently" : "");
        CompareStates();
    }

    void CompareStates() const
    {
        std::vector<bool> active, changed;
        for (const CError& error : m_database.GetErrorList())
        {
            active.push_back(error.Active());
            changed.push_back(error.Changed());
        }
        ASSERT_EQ(active, m_model.Active());
        ASSERT_EQ(changed, m_model.Changed());
    }

    void CompareTops()
    {
        m_database.UpdateErrorTree();
        for (const bool changedOnly : {false, true})
        {
            ASSERT_EQ(IndicesOf(m_database.ActiveErrors(changedOnly)), m_model.Tops(true, changedOnly));
            ASSERT_EQ(IndicesOf(m_database.InactiveErrors(changedOnly)), m_model.Tops(false, changedOnly));
        }
        m_model.ForgetChanges();
        CompareStates();
    }

    std::vector<std::size_t> IndicesOf(const std::list<const CError*>& errors) const
    {
        std::vector<std::size_t> indices;
        for (const CError* error : errors)
            indices.push_back(static_cast<std::size_t>(error - m_database.GetErrorList().data()));
        return indices;
    }

    std::mt19937 m_random;
    std::vector<Support::STestError> m_definitions;
    Fixtures::CHierarchyModel m_model;
    Fixtures::CConfiguration m_configuration;
    CErrorDatabase m_database;
    Lines m_heard;
};

TEST_P(ErrorDatabaseModelTest, PositionsAreCountedUpFromTheLeaves)
{
    std::vector<int> positions;
    for (const CError& error : m_database.GetErrorList())
        positions.push_back(error.Position());
    EXPECT_EQ(positions, m_model.Positions());
}

TEST_P(ErrorDatabaseModelTest, ListingsShowTheHierarchy)
{
    for (const bool includeLeaves : {false, true})
        EXPECT_EQ(Support::PrintedBy([&] { m_database.PrintHierarchy(includeLeaves); }),
                  m_model.Hierarchy(includeLeaves));
}

TEST_P(ErrorDatabaseModelTest, ErrorsFollowRequestsAndListsFollowErrors)
{
    for (int step = 0; step < 400; ++step)
    {
        ASSERT_NO_FATAL_FAILURE(CompareRequest()) << "step " << step;
        if (m_random() % 5 == 0)
        {
            ASSERT_NO_FATAL_FAILURE(CompareTops()) << "step " << step;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ErrorDatabaseModelTest, testing::Range(0u, 50u));

} // namespace
