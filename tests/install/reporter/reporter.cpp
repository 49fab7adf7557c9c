#include <Faultkeeper/FaultkeeperAPI.h>

// Reports that there is no SIM card, or with any argument that there is one again.
int main(int argumentCount, char**)
{
    using namespace Faultkeeper;
    const std::pair<int, int> noSim(int{emiCellRadio} | int{esmiGSM} | int{epiNoSIM}, 5);
    CFaultkeeperAPI client;
    const int result = argumentCount == 1 ? client.RaiseError(noSim, false) : client.ClearError(noSim);
    return result == 1 && client.WaitUntilAcknowledged(30000) ? 0 : 1;
}
