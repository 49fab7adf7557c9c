#ifndef FAULTKEEPERCTL_COMMANDS_H
#define FAULTKEEPERCTL_COMMANDS_H

namespace Faultkeeper::Apps
{

class CCommandLine;

/// Each adds one command (the first one two) in a file of its own, CommandXxx.cpp.
void AddReport(CCommandLine& commandLine);
void AddStatus(CCommandLine& commandLine);
void AddList(CCommandLine& commandLine);
void AddHistory(CCommandLine& commandLine);
void AddWatch(CCommandLine& commandLine);
void AddKey(CCommandLine& commandLine);
void AddDecode(CCommandLine& commandLine);
void AddActive(CCommandLine& commandLine);
void AddStatistics(CCommandLine& commandLine);
void AddTable(CCommandLine& commandLine);
void AddHierarchy(CCommandLine& commandLine);
void AddTree(CCommandLine& commandLine);
void AddSymbols(CCommandLine& commandLine);
void AddStrings(CCommandLine& commandLine);

/// All of them, in the order in which help lists them.
inline void AddCommands(CCommandLine& commandLine)
{
    AddReport(commandLine);
    AddStatus(commandLine);
    AddList(commandLine);
    AddHistory(commandLine);
    AddWatch(commandLine);
    AddActive(commandLine);
    AddKey(commandLine);
    AddDecode(commandLine);
    AddHierarchy(commandLine);
    AddTree(commandLine);
    AddSymbols(commandLine);
    AddStrings(commandLine);
    AddStatistics(commandLine);
    AddTable(commandLine);
}

} // namespace Faultkeeper::Apps

#endif
