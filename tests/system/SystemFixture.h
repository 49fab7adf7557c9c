#pragma once

#include "ChildProcess.h"
#include "support/FileLock.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/StatusTable.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Support
{

using Id = std::pair<int, int>;
using Ids = std::vector<Id>;

// Either sensor raises the receiver, the receiver raises the position.
const Id kLinkSensor(0x40C09, 9); // Positioning:GPS:Communications:9
const Id kDataSensor(0x4281B, 2); // Positioning:Ublox:No Data:2
const Id kReceiver(0x40C1B, 2);   // Positioning:GPS:No Data:2
const Id kPosition(0xA211B, 2);   // System:Position:No Data:2

/// A display: its own database, kept up to date from the shared table.
class CDisplay
{
public:
    /// @param configuration  with a slash at its end
    explicit CDisplay(const std::string& configuration);

    /// Identifiers of the errors that are active after synchronising, in order.
    Ids Active();

    /// Synchronises until exactly these are active.
    bool ShowsInTime(const Ids& ids);

    /// The record as of the last synchronisation.
    Faultkeeper::SErrorEntry Record(const Id& id) const;

private:
    Faultkeeper::CErrorDatabase m_database;
    Faultkeeper::CErrorDatabaseView m_view;
};

/// A connection without the library: for what a script, or a stranger, sends to the owner.
class CRawConnection
{
public:
    /// Connects to port 5300 of 127.0.0.1.
    CRawConnection();
    ~CRawConnection();
    CRawConnection(const CRawConnection&) = delete;
    CRawConnection& operator=(const CRawConnection&) = delete;

    void Send(const std::string& bytes) const;
    /// Tells the other end that nothing more is sent.
    void EndSending() const;
    /// What the other end sends, up to so many bytes or until it closes; "late" at its end if neither comes.
    std::string Received(std::size_t size = std::string::npos) const;
    /// Waits until the other end has closed. @return false if it does not
    bool ClosedInTime() const;

private:
    int m_socket;
};

/// Owner, reporters and displays as processes of their own around one table, on the port that all of them
/// use.
class SystemTest : public SharedTableTest
{
protected:
    SystemTest();

    /// Starts an owner with the test's configuration in the test's directory and waits until it is ready.
    /// @param more  further arguments
    std::unique_ptr<CProgram> StartOwner(const std::vector<std::string>& more = {});
    /// Ends an owner so that it cannot do anything about it.
    static void Kill(CProgram& owner);
    /// The same with any arguments, and without waiting.
    static std::unique_ptr<CProgram> RunOwner(const std::vector<std::string>& arguments);

    /// Starts a reporter: "raise 0x40C09 9 clear 0x40C09 9 ...".
    static std::unique_ptr<CProgram> StartReporter(const std::string& words);
    /// Runs a reporter to its end and expects that it goes well.
    static void Report(const std::string& words);

    /// The table's bytes as they stand, without the lock: it is gone when the owner has ended.
    Faultkeeper::SStatusTable Table();
    Faultkeeper::SErrorEntry Record(const Id& id);
    bool TableExists() const;

    std::string Configuration() const { return m_directory.Prefix(); }

private:
    CPortLock m_port;
};

} // namespace Support
