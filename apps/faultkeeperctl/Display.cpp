#include "faultkeeperctl/Display.h"

#include "common/ConfigurationFingerprint.h"
#include "common/owner/OwnerClaim.h"
#include "common/text/ErrorNames.h"
#include "faultkeeperctl/owner/OwnerStatistics.h"
#include "faultkeeperctl/text/Progress.h"
#include "faultkeeperctl/text/TimeText.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <Core/IO/XMLDocument.h>

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kCopyAttempts = 20;
constexpr std::chrono::milliseconds kAnswerPatience(500);

bool Raised(const SErrorEntry& record)
{
    return (record.flags & kRaisedFlag) != 0;
}

// Of two records with one identifier the first is the one that owners write to.
std::map<ErrorId, bool> RaisedById(const std::vector<SErrorEntry>& records)
{
    std::map<ErrorId, bool> raised;
    for (const SErrorEntry& record : records)
        raised.emplace(ErrorId(record.problemCode, record.problemType), Raised(record));
    return raised;
}

bool SameRecords(const std::vector<SErrorEntry>& left, const std::vector<SErrorEntry>& right)
{
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size() * sizeof(SErrorEntry)) == 0);
}

// The overlay reads a broken file as an empty one, without a word.
void WarnOfBrokenPatterns(const std::string& prefix)
{
    const std::string path = prefix + "ErrorPatterns.xml";
    std::error_code ignored;
    Core::IO::XMLDocument document(false);
    if (std::filesystem::exists(path, ignored) && !document.Parse(path))
        std::fprintf(stderr, "%s:%s; no friendly codes are shown\n", path.c_str(), document.Error().c_str());
}

// The port has one owner, which may be that of another directory; the same one can have several names.
bool OwnsWorkingDirectory(const SOwnerStatistics& statistics)
{
    std::error_code gone;
    return std::filesystem::equivalent(statistics.Text("runDirectory"), ".", gone);
}
} // namespace

CDisplay::CDisplay(const SSettings& settings)
    : m_settings(settings), m_database(LoadConfiguration(settings)), m_overlay(settings.configuration)
{
    WarnOfBrokenPatterns(settings.configuration);
    EnterRunDirectory(settings);
}

ETableState CDisplay::Refresh()
{
    m_changed = false;
    for (int attempt = 0; attempt < kCopyAttempts; ++attempt)
    {
        FollowTable();
        if (m_facts.state != etsReady || CopyRecords())
            break;
        m_facts.state = etsBusy; // the lock was free a moment ago
    }
    return m_facts.state;
}

void CDisplay::Wait(int timeoutMilliseconds)
{
    if (m_view != nullptr && m_facts.state == etsReady)
        m_view->WaitForChange(timeoutMilliseconds);
    else
        poll(nullptr, 0, timeoutMilliseconds);
}

ETableState CDisplay::RefreshTelling()
{
    const CProgress progress("waiting for the table's lock");
    return Refresh();
}

void CDisplay::RequirePicture()
{
    if (RefreshTelling() != etsReady)
        throw CFailure(StatusOf(m_facts.state), StateText(m_facts, m_settings.runDirectory));
    WarnOfOtherConfiguration();
}

void CDisplay::WarnOfOtherConfiguration() const
{
    SOwnerStatistics statistics;
    if (!OwnerClaimMade()) // nobody there would understand the question
        return;
    if (AskOwner(kAnswerPatience, statistics) != eoaAnswered || !OwnsWorkingDirectory(statistics) ||
        statistics.Text("configuration") == ConfigurationFingerprint(*m_database))
        return;
    std::fprintf(
        stderr,
        "faultkeeperctl: the owner has loaded another configuration than the one in %s; what is shown may "
        "be wrong\n",
        m_settings.configuration.c_str());
}

// Finds out how the table stands, and attaches to a table that has been removed and made anew.
void CDisplay::FollowTable()
{
    m_facts = ProbeTable(m_attached);
    if (m_facts.state != etsReady ||
        (m_view != nullptr && m_facts.segment == m_attached.back() && !m_view->Failed()))
        return;
    m_view = std::make_unique<CErrorDatabaseView>(false, eViewReader);
    m_attached.push_back(m_facts.segment);
}

// False if the lock was busy just then, so that the view still has the copy from before, or none.
bool CDisplay::CopyRecords()
{
    m_view->Synchronise(*m_database);
    std::vector<SErrorEntry> records;
    m_view->RetrieveAllErrors(records);
    const std::vector<SErrorEntry> probed(m_facts.table.records,
                                          m_facts.table.records + RecordCount(m_facts.table));
    if (m_view->Failed() || records.size() != probed.size() ||
        (SameRecords(records, m_records) && !SameRecords(records, probed)))
        return false;
    m_changed = !SameRecords(records, m_records);
    m_records = records;
    CorrectDatabase();
    return true;
}

// A view replays what it notices. An owner that was replaced meanwhile, or whose clock went back, leaves
// errors that it does not notice, so they are set here.
void CDisplay::CorrectDatabase()
{
    const std::map<ErrorId, bool> raised = RaisedById(m_records);
    bool corrected = false;
    for (const CError& error : m_database->GetErrorList())
    {
        const int code = error.ProblemCode();
        const int type = error.ProblemType();
        const auto record = raised.find(ErrorId(code, type));
        const bool shouldBeActive = record != raised.end() && record->second;
        if (m_database->RetrieveError(code, type)->Active() == shouldBeActive)
            continue;
        if (shouldBeActive)
            m_database->RaiseError(code, type, true);
        else
            m_database->ClearError(code, type, true);
        corrected = true;
    }
    if (corrected)
        m_database->SynchronisationComplete();
}

std::vector<SErrorTree> CDisplay::Trees(bool useTextKeys) const
{
    std::vector<SErrorTree> trees;
    if (m_view != nullptr)
        CErrorPresentation::GetErrorTree(*m_view, m_overlay, m_database->ActiveErrors(false), trees,
                                         useTextKeys);
    return trees;
}

std::vector<ErrorId> CDisplay::ErrorsOfKey(const std::string& key)
{
    std::vector<ErrorId> codes;
    for (int attempt = 0; attempt < kCopyAttempts && codes.empty() && m_view != nullptr; ++attempt)
    {
        if (ProbeTable(m_attached).state != etsReady) // waits for a lock that is busy
            continue;
        SErrorTree tree;
        std::vector<std::string> lines;
        CErrorPresentation::RegenerateErrorTree(key, *m_database, *m_view, tree, lines, codes, true);
    }
    return codes;
}

std::vector<std::string> CDisplay::UnknownRaised() const
{
    std::vector<std::string> names;
    for (const auto& entry : RaisedById(m_records))
    {
        if (entry.second && m_database->RetrieveError(entry.first.first, entry.first.second) == nullptr)
            names.push_back(ErrorName(entry.first.first, entry.first.second));
    }
    return names;
}

std::string StateText(const STableFacts& facts, const std::string& directory)
{
    if (facts.state == etsBusy && facts.holder <= 0)
        return "the table in " + directory + " is locked again and again, so that it cannot be copied";
    const std::string text = Describe(facts, directory);
    return facts.state == etsOwnerGone && facts.lastSeen > 0
               ? text + ", last seen " + TimeOrNever(facts.lastSeen)
               : text;
}

EProgramStatus StatusOf(ETableState state)
{
    switch (state)
    {
    case etsAbsent:
    case etsOwnerGone:
    case etsNotReady:
        return epsNoOwner;
    case etsForeign:
    case etsRefused:
    case etsFailed:
    case etsBusy:
        return epsNo;
    case etsReady:
        break;
    }
    return epsDone;
}

void WarnOfUnknown(const CDisplay& display)
{
    for (const std::string& name : display.UnknownRaised())
        std::fprintf(stderr, "faultkeeperctl: %s is raised, but this configuration does not define it\n",
                     name.c_str());
}

} // namespace Faultkeeper::Apps
