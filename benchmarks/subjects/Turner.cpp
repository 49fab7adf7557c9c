#include "subjects/Turner.h"

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
void Turn(CErrorDatabase& database, const CError& error, bool active)
{
    if (active)
        database.RaiseError(error.ProblemCode(), error.ProblemType(), true);
    else
        database.ClearError(error.ProblemCode(), error.ProblemType(), true);
}
} // namespace

CTurner::CTurner(CErrorDatabase& database, EShape shape)
    : m_database(database), m_step(ScatterStep(database.GetErrorList().size()))
{
    std::size_t place = 0;
    for (const CError& error : database.GetErrorList())
        Turn(database, error, place++ % 3 == 0 && shape == esPlausible);
    database.UpdateErrorTree();
}

void CTurner::Next()
{
    m_turned = !m_turned;
    if (m_turned)
        m_place = (m_place + m_step) % m_database.GetErrorList().size();
    const CError& error = m_database.GetErrorList()[m_place];
    Turn(m_database, error, !error.Active());
}

} // namespace Benchmarks
