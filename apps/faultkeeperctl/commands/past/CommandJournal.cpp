#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/following/Ending.h"
#include "faultkeeperctl/past/JournalText.h"
#include "faultkeeperctl/past/StorePast.h"
#include "faultkeeperctl/text/TimeText.h"
#include "faultkeeperctl/typed/TypedTime.h"

#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kLookMilliseconds = 250;
constexpr int kDigits = 3;

struct SJournalArguments
{
    std::string since; // "" for all that there is
    std::string store; // "" for the usual one
    bool follow = false;
};

typedef std::vector<STransition> Transitions;

/// Those that are of interest, and whether that is all there was of them.
struct SExcerpt
{
    Transitions transitions;
    bool complete = true;
};

constexpr std::int64_t kPrinted = 1000000; // nanoseconds that a time as printed here lasts

STypedTime ParsedSince(const std::string& since, std::int64_t now)
{
    return since.empty() ? STypedTime() : TimeTyped(since, now);
}

/// The latest time that has come: a clock that is set back afterwards does not take it back.
std::int64_t Latest(const SPast& past, std::int64_t now)
{
    for (const STransition& transition : past.journal)
        now = std::max(now, transition.time.Nanoseconds());
    return now;
}

// From the first one of that time or later: a clock that is set back afterwards hides nothing.
SExcerpt Excerpt(const SPast& past, const STypedTime& time)
{
    const auto first =
        std::find_if(past.journal.begin(), past.journal.end(),
                     [&time](const STransition& found) { return found.time.Nanoseconds() >= time.first; });
    SExcerpt excerpt;
    excerpt.transitions.assign(first, past.journal.end());
    const bool fromBeginning = first == past.journal.begin();
    excerpt.complete = past.journal.empty() || !fromBeginning || first->number == 1 ||
                       first->time.Nanoseconds() < time.first + kPrinted;
    return excerpt;
}

void WarnOfBeginning(const SPast& past, const SExcerpt& excerpt)
{
    if (!excerpt.complete)
        std::fprintf(stderr, "faultkeeperctl: the journal begins at %s; what was before is forgotten\n",
                     ExactTimeText(past.journal.front().time, kDigits).c_str());
}

/// Prints transitions as they come.
class CPrinter
{
public:
    explicit CPrinter(bool json) : m_json(json) {}

    void Print(const Transitions& transitions)
    {
        const CPrinting printing;
        for (const STransition& transition : transitions)
        {
            if (m_json)
                PrintLine(TransitionDocument(transition));
            else
                std::cout << TransitionText(transition, m_any ? &m_last : nullptr);
            m_last = transition;
            m_any = true;
        }
        std::cout.flush();
    }

private:
    const bool m_json;
    bool m_any = false;
    STransition m_last;
};

EProgramStatus Follow(const SPast& past, const SExcerpt& excerpt, const std::string& store, bool json)
{
    EndOnSignals();
    CPrinter printer(json);
    printer.Print(excerpt.transitions);
    CJournalFollower follower(store, past.journal.empty() ? 1 : past.journal.back().number + 1);
    while (!EndRequested() && std::cout.good() && !ReaderGone())
    {
        const Transitions news = follower.News();
        if (news.empty())
            poll(nullptr, 0, kLookMilliseconds);
        else
            printer.Print(news);
    }
    return epsDone;
}

Json JournalDocument(const std::string& store, const SExcerpt& excerpt)
{
    Json document;
    document["store"] = store;
    document["complete"] = excerpt.complete;
    document["transitions"] = Json::array();
    for (const STransition& transition : excerpt.transitions)
        document["transitions"].push_back(TransitionDocument(transition));
    return document;
}

EProgramStatus Journal(const SSettings& settings, const SJournalArguments& arguments)
{
    const std::int64_t now = Core::Time::Now().Nanoseconds();
    const STypedTime since = ParsedSince(arguments.since, now);
    const std::string store = StorePath(settings, arguments.store);
    const SPast past = ReadPast(store);
    RequirePast(since, Latest(past, now));
    SExcerpt excerpt = Excerpt(past, since);
    if (arguments.follow && arguments.since.empty())
        excerpt = SExcerpt(); // what comes from now on
    WarnOfBeginning(past, excerpt);
    if (arguments.follow)
        return Follow(past, excerpt, store, settings.json);
    if (settings.json)
        PrintDocument(JournalDocument(store, excerpt));
    else if (excerpt.transitions.empty())
        std::cout << (arguments.since.empty() ? "Nothing was raised or cleared.\n"
                                              : "Nothing was raised or cleared since.\n");
    else
        CPrinter(false).Print(excerpt.transitions);
    return epsDone;
}
} // namespace

void AddStateOption(CCommand& command, std::string& store)
{
    command.Text("--state", store, "FILE",
                 "the owner's store (default: faultkeeper.db in the run directory)");
}

void AddJournal(CCommandLine& commandLine)
{
    const auto arguments = std::make_shared<SJournalArguments>();
    CCommand command = commandLine.Add(
        "journal", "List what was raised and cleared, oldest first",
        "Reads the owner's store, whether an owner runs or not; the owner does not notice. Each line tells\n"
        "when, what, and which client's session reported it or which error it followed. A TIME is one as it\n"
        "is printed, or less of it, or how long ago: 90s, 10m, 2h, 1d, 1h30m. With --follow what comes from\n"
        "now on, or since TIME, until Ctrl-C; with --json one document a line then.\n"
        "Example: faultkeeperctl journal --since 10m --follow",
        [arguments](const SSettings& settings) { return Journal(settings, *arguments); });
    command.Text("--since", arguments->since, "TIME", "leave out what was before");
    command.Flag("--follow", arguments->follow, "go on with what comes");
    AddStateOption(command, arguments->store);
}

} // namespace Faultkeeper::Apps
