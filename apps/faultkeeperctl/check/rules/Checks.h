#ifndef FAULTKEEPERCTL_CHECK_RULES_CHECKS_H
#define FAULTKEEPERCTL_CHECK_RULES_CHECKS_H

#include "faultkeeperctl/check/Findings.h"
#include "faultkeeperctl/check/hierarchy/Hierarchy.h"

namespace Faultkeeper::Apps
{

/// What can only be told once all files are read. Each check looks at everything and tells of one subject.

/// Triggers that name no error, their own error, or one that the set has already; sets without any, and those
/// that are the same.
void CheckTriggers(const CHierarchy& hierarchy, CFindings& findings);

/// Thresholds of automatic sets that can never or always be met.
void CheckThresholds(const SConfigurationModel& model, CFindings& findings);

/// Errors that stay raised when what has raised them is cleared, because they have several automatic sets.
void CheckClearing(const CHierarchy& hierarchy, CFindings& findings);

/// Sets that neither raise anything nor are ever seen.
void CheckDisplay(const CHierarchy& hierarchy, CFindings& findings);

/// Errors that are defined twice.
void CheckDefinitions(const SConfigurationModel& model, CFindings& findings);

/// Texts that are missing, blank or show markup; with a line width other than 0 also those that are wider.
void CheckTexts(const CHierarchy& hierarchy, int lineWidth, CFindings& findings);

/// More errors than the shared table holds.
void CheckCapacity(const SConfigurationModel& model, CFindings& findings);

/// Errors that trigger each other in a circle.
void CheckCycles(const CHierarchy& hierarchy, CFindings& findings);

/// Trees that can grow so large that nobody can wait for their state keys.
void CheckStateKeys(const CHierarchy& hierarchy, CFindings& findings);

/// Patterns that name errors that are not there, or can never be the one that matches.
void CheckPatterns(const CHierarchy& hierarchy, CFindings& findings);

/// "no error "X" is defined; did you mean "Y"?"
/// @param meant  Y, or "" if nothing comes near
SMessage UndefinedError(const SReference& reference, const std::string& meant);

} // namespace Faultkeeper::Apps

#endif
