#include <Faultkeeper/FaultkeeperAPI.h>

// Reports that there is no SIM card, or with any argument that there is one again.
int main(int argumentCount, char**)
{
    const std::pair<int, int> noSim(Faultkeeper::emiCellRadio | Faultkeeper::esmiGSM | Faultkeeper::epiNoSIM,
                                    5);
    Faultkeeper::CFaultkeeperAPI client;
    const int result = argumentCount == 1 ? client.RaiseError(noSim, false) : client.ClearError(noSim);
    return result == 1 && client.WaitUntilAcknowledged(30000) ? 0 : 1;
}
