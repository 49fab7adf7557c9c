#pragma once

#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace HostTest
{

constexpr char kPlain[] = "d4:argsle4:name1:xe";
constexpr char kShortest[] = "d4:argsle4:name0:e"; // of all notifications

/// Writes down what a server tells, by connection.
class CSessionsHandler : public MPIServerHandlerC
{
public:
    void PeerConnected(const MPIPeerC& peer) override
    {
        last = peer.connection;
        if (onConnection)
            onConnection(peer);
    }
    void PeerIntroduced(const MPIPeerC& peer) override
    {
        logs[peer.connection] += "introduced " + peer.session + "\n";
        if (onIntroduction)
            onIntroduction(peer);
    }
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override
    {
        logs[peer.connection] += std::to_string(notification.offset) + " " + notification.name + " number " +
                                 std::to_string(notification.number) + "\n";
        ++counts[peer.connection];
        if (onNotification)
            onNotification(peer);
        return notification.name != "refuse";
    }
    void BatchEnded(const MPIPeerC& peer) override
    {
        logs[peer.connection] += "batch\n";
        batches.push_back(counts[peer.connection]);
        if (onBatch)
            onBatch(peer);
    }
    void PeerFinished(const MPIPeerC& peer) override
    {
        ++finished[peer.connection];
        if (onFinish)
            onFinish(peer);
    }
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override
    {
        logs[peer.connection] += "refused at " + std::to_string(offset) + ": " + reason + "\n";
        if (onRefusal)
            onRefusal(peer);
    }
    void PeerTurnedAway(const MPIPeerC&) override { ++turnedAway; }
    void PeerDisconnected(const MPIPeerC& peer) override { logs[peer.connection] += "disconnected\n"; }

    std::uint64_t last = 0;
    std::map<std::uint64_t, std::string> logs;
    std::map<std::uint64_t, int> counts; // of notifications
    std::vector<int> batches;            // the count when each ended
    std::map<std::uint64_t, int> finished;
    int turnedAway = 0;
    std::function<void(const MPIPeerC&)> onConnection;
    std::function<void(const MPIPeerC&)> onIntroduction;
    std::function<void(const MPIPeerC&)> onNotification;
    std::function<void(const MPIPeerC&)> onBatch;
    std::function<void(const MPIPeerC&)> onFinish;
    std::function<void(const MPIPeerC&)> onRefusal;
};

} // namespace HostTest
