#ifndef FAULTKEEPERCTL_COMMANDS_H
#define FAULTKEEPERCTL_COMMANDS_H

#include <string>

namespace Faultkeeper::Apps
{

class CCommand;
class CCommandLine;

/// Each adds one command (the first one two) in a file of its own, CommandXxx.cpp, here or where its subject
/// is.
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
void AddCheck(CCommandLine& commandLine);
void AddTree(CCommandLine& commandLine);
void AddSymbols(CCommandLine& commandLine);
void AddStrings(CCommandLine& commandLine);
void AddSimulate(CCommandLine& commandLine);
void AddWhy(CCommandLine& commandLine);
void AddJournal(CCommandLine& commandLine);
void AddAt(CCommandLine& commandLine);

/// Adds the option that names the owner's store, "--state".
/// @param store  borrowed
void AddStateOption(CCommand& command, std::string& store);

/// All of them, in the order in which help lists them.
inline void AddCommands(CCommandLine& commandLine)
{
    AddReport(commandLine);
    AddStatus(commandLine);
    AddList(commandLine);
    AddHistory(commandLine);
    AddWatch(commandLine);
    AddActive(commandLine);
    AddWhy(commandLine);
    AddJournal(commandLine);
    AddAt(commandLine);
    AddKey(commandLine);
    AddDecode(commandLine);
    AddCheck(commandLine);
    AddHierarchy(commandLine);
    AddTree(commandLine);
    AddSymbols(commandLine);
    AddStrings(commandLine);
    AddSimulate(commandLine);
    AddStatistics(commandLine);
    AddTable(commandLine);
}

} // namespace Faultkeeper::Apps

#endif
