#ifndef FAULTKEEPERCTL_SIMULATION_SIMULATIONTEXT_H
#define FAULTKEEPERCTL_SIMULATION_SIMULATIONTEXT_H

#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/simulation/Simulation.h"

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// What all steps have done, the same on every machine and at every time: kept in a file, it is what a later
/// run is compared with.
std::string SimulationText(const std::vector<SSimulatedStep>& steps);

/// "steps": one object each.
Json SimulationDocument(const std::vector<SSimulatedStep>& steps);

} // namespace Faultkeeper::Apps

#endif
