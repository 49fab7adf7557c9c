#pragma once

#include "support/FileLock.h"
#include "support/SharedTable.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Support
{

typedef nlohmann::ordered_json Json;

// Link and data raise the receiver, the receiver, linked shallowly, raises the position; the sound stands
// alone.
const std::string kLink = "Positioning:GPS:Communications:9";
const std::string kData = "Positioning:Ublox:No Data:2";
const std::string kReceiver = "Positioning:GPS:No Data:2";
const std::string kPosition = "System:Position:No Data:2";
const std::string kSound = "Audio:None:Cannot Open:11";

/// An environment variable of this process and those it starts, put back to what it was when the object goes.
class CVariable
{
public:
    CVariable(const std::string& name, const std::string& value);
    /// Takes the variable away.
    explicit CVariable(const std::string& name);
    ~CVariable();
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    std::string m_name;
    bool m_wasSet;
    std::string m_before;
};

/// What a program did that was run to its end.
struct SFinished
{
    int status = -1;
    std::string output;
    std::string errors;
};

/// A table in a fresh run directory, owned by the test process itself, and a configuration in a directory of
/// its own. Times are shown in UTC.
class CtlTest : public SharedTableTest
{
protected:
    CtlTest();

    /// Makes the table and declares it ready.
    void StartOwner();
    /// Raises or clears in the table, as an owner would; parents do not follow by themselves.
    void Raise(const std::string& name);
    void Clear(const std::string& name);

    /// Starts the program with the test's configuration and run directory, then the given arguments.
    std::unique_ptr<CProgram> Start(const std::vector<std::string>& arguments) const;
    /// The same, and waits for its end.
    SFinished Ctl(const std::vector<std::string>& arguments) const;
    /// Runs a command with --json, expects it to be done, and reads what it printed.
    Json Document(std::vector<std::string> arguments) const;
    /// Runs the program with the given arguments and no others.
    static SFinished Bare(const std::vector<std::string>& arguments);

    const std::string& Configuration() const { return m_configuration.Path(); }
    Faultkeeper::CErrorDatabaseView& Owner() { return *m_owner; }

private:
    CPortLock m_port; // displays ask the owner there
    CVariable m_zone{"TZ", "UTC0"};
    CVariable m_noColumns{"COLUMNS"};
    CVariable m_noConfiguration{"FAULTKEEPER_CONFIG"};
    CVariable m_noRunDirectory{"FAULTKEEPER_RUN_DIR"};
    CFreshDirectory m_configuration;
    std::unique_ptr<Faultkeeper::CErrorDatabase> m_database;
    std::unique_ptr<Faultkeeper::CErrorDatabaseView> m_owner;
};

/// The text with "TIME" in place of each time to the second.
std::string WithoutTimes(std::string text);

/// Keys of an object in their order, joined by blanks.
std::string KeysOf(const Json& object);

} // namespace Support
