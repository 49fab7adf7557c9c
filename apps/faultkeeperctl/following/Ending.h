#ifndef FAULTKEEPERCTL_FOLLOWING_ENDING_H
#define FAULTKEEPERCTL_FOLLOWING_ENDING_H

/// How commands end that would go on for ever: by Ctrl-C or SIGTERM, which is no failure, or because nobody
/// reads what they print.
namespace Faultkeeper::Apps
{

/// From here on the two signals only ask for the end, except while something is being printed: nobody may be
/// reading that, so that it would never end.
void EndOnSignals();

bool EndRequested();

/// Is the reader of standard output gone? It is noticed also when there is nothing to tell it.
bool ReaderGone();

/// Around all that is printed.
class CPrinting
{
public:
    CPrinting();
    ~CPrinting();
    CPrinting(const CPrinting&) = delete;
    CPrinting& operator=(const CPrinting&) = delete;
};

} // namespace Faultkeeper::Apps

#endif
