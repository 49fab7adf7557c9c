#include "Common/ErrorName.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/Identifiers.h>

namespace Faultkeeper
{

namespace
{
constexpr int kModuleMask = 0xFF0000;
constexpr int kSubModuleMask = 0xFF00;
constexpr int kProblemMask = 0xFF;
} // namespace

std::string ErrorName(int problemCode, int problemType)
{
    return TranslateModuleId(static_cast<EModuleIdentifier>(problemCode & kModuleMask)) + ":" +
           TranslateSubModuleId(static_cast<ESubModuleIdentifier>(problemCode & kSubModuleMask)) + ":" +
           TranslateProblemId(static_cast<EProblemIdentifier>(problemCode & kProblemMask)) + ":" +
           std::to_string(problemType);
}

std::string ErrorName(const CError& error)
{
    return ErrorName(error.ProblemCode(), error.ProblemType());
}

} // namespace Faultkeeper
