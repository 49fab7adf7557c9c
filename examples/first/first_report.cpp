// The smallest reporter there is: no corrections come in, and then they do again.

#include <Faultkeeper/FaultkeeperAPI.h>

#include <utility>

using namespace Faultkeeper;

int main()
{
    CFaultkeeperAPI faults; // connects to the owner, and again whenever the owner comes back
    const std::pair<int, int> noCorrections(emiBaseRadio | esmiCommunications | epiNoData,
                                            eptDataCollectionTimeout);

    faults.RaiseError(noCorrections, false); // 1: sent; 0: the owner knows; -1: kept until there is an owner
    faults.ClearError(noCorrections);

    const int patienceMilliseconds = 2000;
    return faults.WaitUntilAcknowledged(patienceMilliseconds) ? 0 : 1; // for programs that report and end
}
