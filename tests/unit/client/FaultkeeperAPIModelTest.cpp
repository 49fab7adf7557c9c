#include "ClientModel.h"
#include "FakeHostTest.h"
#include "support/Shrinking.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>
#include <tuple>
#include <utility>

// Random reports of a few errors, in every form, over a connection that comes and goes between reports and in
// the middle of them. What fails is shown as short as it can be made: a script for a new client that is
// connected.

using namespace Faultkeeper;

namespace
{

using Models::SClientStep;

typedef std::vector<SClientStep> TScript;

// Some agree in one number, or in their sum, or in the lower bits.
constexpr int kCodes[] = {1, 2, 65537, -1};
constexpr int kTypes[] = {1, 2, 257};
constexpr int kSteps = 60;
constexpr int kRounds = 150;
constexpr std::size_t kFewSteps = 12;
constexpr int kManyChecks = 10 * kSteps;

bool IsReport(const SClientStep& step)
{
    return step.action <= Models::ecaClearPair;
}

std::string Shown(const TScript& script)
{
    std::string text;
    for (const SClientStep& step : script)
        text += Shown(step) + "\n";
    return text;
}

// ---- Making scripts, and making them smaller

class Maker
{
public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    TScript Made()
    {
        const int ids = 1 + Below(8);
        m_ids.resize(static_cast<std::size_t>(ids));
        std::generate(m_ids.begin(), m_ids.end(),
                      [this] {
                          return std::pair<int, int>{kCodes[Below(4)], kTypes[Below(3)]};
                      });
        TScript made(kSteps);
        std::generate(made.begin(), made.end(), [this] { return AnyStep(); });
        return made;
    }

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    SClientStep AnyStep()
    {
        using namespace Models;
        static const EClientAction kOthers[] = {ecaProcess, ecaProcess, ecaAnswers, ecaAnswers, ecaAnswers,
                                                ecaAnswers, ecaAnswers, ecaSilent,  ecaSilent,  ecaRestart};
        const int kind = Below(100);
        if (kind < 70)
            return AnyReport(static_cast<EClientAction>(Below(4)));
        SClientStep step;
        step.action = kind < 80 ? ecaConnection : kOthers[Below(10)];
        step.flag = Below(step.action == ecaSilent ? 2 : 6) == 0;
        for (int answers = step.action == ecaAnswers ? 1 + Below(8) : 0; answers > 0; --answers)
            step.answers.push_back(Below(3) != 0);
        return step;
    }

    SClientStep AnyReport(Models::EClientAction action)
    {
        const std::pair<int, int>& id =
            m_ids[static_cast<std::size_t>(Below(static_cast<int>(m_ids.size())))];
        const bool flag = Below(2) == 0;
        const bool queue = Below(3) != 0;
        return {action, id.first, id.second, flag, queue, {}};
    }

    std::mt19937 m_random;
    std::vector<std::pair<int, int>> m_ids; // that the script is about
};

/// The script with one number in place of another throughout.
TScript Renumbered(TScript script, int SClientStep::*number, int from, int to)
{
    for (SClientStep& step : script)
        if (step.*number == from)
            step.*number = to;
    return script;
}

/// With a number from further ahead in the list for one from further behind, if there is that one.
template <std::size_t kCount>
void AppendRenumbered(const TScript& whole, int SClientStep::*number, const int (&numbers)[kCount],
                      std::vector<TScript>& smaller)
{
    for (std::size_t from = 1; from < kCount; ++from)
    {
        const bool used = std::any_of(whole.begin(), whole.end(),
                                      [&](const SClientStep& step) { return step.*number == numbers[from]; });
        for (std::size_t to = 0; used && to < from; ++to)
            smaller.push_back(Renumbered(whole, number, numbers[from], numbers[to]));
    }
}

/// With fewer answers for one step; a short script also with fewer steps that took them.
void AppendWithFewerAnswers(const TScript& whole, std::size_t step, std::vector<TScript>& smaller)
{
    for (const std::vector<bool>& answers : Support::Shortened(whole[step].answers))
    {
        TScript changed(whole);
        changed[step].answers = answers;
        smaller.push_back(changed);
        if (whole.size() > kFewSteps)
            continue;
        for (const TScript& shorter : Support::Shortened(changed))
            smaller.push_back(shorter);
    }
}

std::vector<TScript> Smaller(const TScript& whole)
{
    std::vector<TScript> smaller = Support::Shortened(whole);
    for (std::size_t step = 0; step < whole.size(); ++step)
    {
        AppendWithFewerAnswers(whole, step, smaller);
        if (!IsReport(whole[step]) || !whole[step].flag)
            continue;
        smaller.push_back(whole);
        smaller.back()[step].flag = false;
    }
    AppendRenumbered(whole, &SClientStep::code, kCodes, smaller);
    AppendRenumbered(whole, &SClientStep::type, kTypes, smaller);
    return smaller;
}

// ---- Trying them

const SClientStep kEnding[] = {{Models::ecaAnswers, 0, 0, false, false, {}},
                               {Models::ecaConnection, 0, 0, true, false, {}},
                               {Models::ecaProcess, 0, 0, false, false, {}},
                               {Models::ecaProcess, 0, 0, false, false, {}}};

std::string Returns(int result)
{
    return "returns " + std::to_string(result) + "\n";
}

class ClientModelTest : public FakeHostTest, public testing::WithParamInterface<unsigned>
{
protected:
    /// @return what differs, in the script or in what is left in the queue then, or ""
    std::string Difference(TScript tried)
    {
        const std::size_t steps = tried.size();
        tried.insert(tried.end(), std::begin(kEnding), std::end(kEnding));
        Start();
        Models::CClientModel model;
        for (std::size_t step = 0; step < tried.size(); ++step)
        {
            const std::string expected = model.Do(tried[step]);
            const std::string seen = SeenOf(tried[step]);
            if (seen != expected)
                return (step < steps ? "at " : "at the end, at ") + Disagreement(tried[step], seen, expected);
        }
        return "";
    }

private:
    static std::string Disagreement(const SClientStep& step, const std::string& seen,
                                    const std::string& expected)
    {
        return Shown(step) + "\nis\n" + seen + "and not\n" + expected;
    }

    void Start()
    {
        m_api.emplace();
        m_host.connected = true;
        m_host.answers.clear();
        m_host.onVerify = [this]
        {
            if (++m_checks > kManyChecks)
                throw std::runtime_error("checks without end");
        };
        m_host.calls.clear();
    }

    /// As the model shows it. A walk that never ends is ended.
    std::string SeenOf(const SClientStep& step)
    {
        m_checks = 0;
        try
        {
            return Do(step);
        }
        catch (const std::runtime_error& endless)
        {
            return std::string(endless.what()) + "\n";
        }
    }

    std::string Do(const SClientStep& step)
    {
        const EProblemType type = static_cast<EProblemType>(step.type);
        const std::pair<int, int> id(step.code, step.type);
        std::string result;
        switch (step.action)
        {
        case Models::ecaRaise:
            result = Returns(m_api->RaiseError(step.code, type, step.flag, step.queue));
            break;
        case Models::ecaClear:
            result = Returns(m_api->ClearError(step.code, type, step.queue));
            break;
        case Models::ecaRaisePair:
            result = Returns(m_api->RaiseError(id, step.flag));
            break;
        case Models::ecaClearPair:
            result = Returns(m_api->ClearError(id));
            break;
        case Models::ecaProcess:
            m_api->ProcessQueuedErrors();
            break;
        case Models::ecaSilent:
            m_api->SilentMode(step.flag);
            break;
        case Models::ecaConnection:
            m_host.connected = step.flag;
            break;
        case Models::ecaAnswers:
            m_host.answers.assign(step.answers.begin(), step.answers.end());
            break;
        case Models::ecaRestart:
            m_api.emplace();
            break;
        }
        return result + FakeHost::TakeCalls();
    }

    int m_checks = 0; // of the connection, in this step
};

TEST_P(ClientModelTest, ReportsAreSentAndQueuedAsTheModelSaysWhateverTheConnectionDoesMeanwhile)
{
    Maker maker(GetParam());
    EXPECT_EQ(Support::SmallestDifference(
                  kRounds, [&] { return maker.Made(); }, Smaller,
                  [this](const TScript& tried) { return Difference(tried); },
                  [](const TScript& failing) { return Shown(failing); }),
              "");
}

// ---- Whether the scripts are worth trying, and failures worth reading

constexpr const char* kNewClient = "a new client";
constexpr const char* kPassedOver = "an event is kept, a later one is sent";
constexpr const char* kRepeatDropped = "a queued repeat goes unsent";
constexpr const char* kAnswersEnd = "answers run out among the events";

const char* const kCases[] = {"pair returns -1",
                              "pair returns 0",
                              "pair returns 1",
                              "pair in silence returns 0",
                              "plain not queueing returns -1",
                              "plain not queueing returns 0",
                              "plain not queueing returns 1",
                              "plain not queueing in silence returns -1",
                              "plain not queueing in silence returns 0",
                              "plain not queueing in silence returns 1",
                              "plain queueing returns -1",
                              "plain queueing returns 0",
                              "plain queueing returns 1",
                              "plain queueing in silence returns -1",
                              "plain queueing in silence returns 0",
                              "plain queueing in silence returns 1",
                              kNewClient,
                              kPassedOver,
                              kRepeatDropped,
                              kAnswersEnd};

typedef std::map<std::string, int> TOccurrences;

bool IsPair(const SClientStep& step)
{
    return step.action == Models::ecaRaisePair || step.action == Models::ecaClearPair;
}

/// "pair returns 0"
std::string ReportOf(const SClientStep& step, bool silent, const std::string& outcome)
{
    const std::string form = IsPair(step) ? "pair" : step.queue ? "plain queueing" : "plain not queueing";
    return form + (silent ? " in silence " : " ") + outcome.substr(0, outcome.find('\n'));
}

std::size_t Checks(const std::string& outcome)
{
    std::size_t checks = 0;
    for (std::size_t at = outcome.find("verify"); at != std::string::npos;
         at = outcome.find("verify", at + 1))
        ++checks;
    return checks;
}

bool IsPassedOver(const std::vector<int>& walked)
{
    return std::find(std::find(walked.begin(), walked.end(), -1), walked.end(), 1) != walked.end();
}

/// @param answers  that were given before the step
/// @param checks   of the connection in the step; those for the events come last
void CountWalk(const std::vector<int>& walked, std::size_t answers, std::size_t checks, TOccurrences& seen)
{
    const auto repeats = static_cast<std::size_t>(std::count(walked.begin(), walked.end(), 0));
    const std::size_t checksBefore = checks - (walked.size() - repeats);
    seen[kPassedOver] += IsPassedOver(walked) ? 1 : 0;
    seen[kRepeatDropped] += repeats > 0 ? 1 : 0;
    seen[kAnswersEnd] += checksBefore < answers && answers < checks ? 1 : 0;
}

TOccurrences OccurrencesIn(const TScript& script)
{
    TOccurrences seen;
    Models::CClientModel model;
    for (const SClientStep& step : script)
    {
        const std::size_t answers = model.AnswersLeft();
        const std::string outcome = model.Do(step);
        if (IsReport(step))
            ++seen[ReportOf(step, model.Silent(), outcome)];
        seen[kNewClient] += step.action == Models::ecaRestart ? 1 : 0;
        CountWalk(model.Walked(), answers, Checks(outcome), seen);
    }
    return seen;
}

TEST_P(ClientModelTest, TheScriptsMeetEveryCaseOften)
{
    Maker maker(GetParam());
    TOccurrences seen;
    for (int round = 0; round < kRounds; ++round)
        for (const auto& each : OccurrencesIn(maker.Made()))
            seen[each.first] += each.second;
    for (const char* each : kCases)
        EXPECT_GE(seen[each], 20) << each;
}

TEST_P(ClientModelTest, AFailureIsShownAsShortAsItCanBe)
{
    const auto fails = [](const TScript& tried) { return OccurrencesIn(tried)[kRepeatDropped] > 0; };
    Maker maker(GetParam());
    TScript found = maker.Made();
    while (!fails(found))
        found = maker.Made();
    const TScript smallest = Support::Shrunk(found, Smaller, fails);
    EXPECT_LE(smallest.size(), 5U) << Shown(smallest); // down, two like reports, up, another report
    for (const SClientStep& step : smallest)
    {
        EXPECT_LE(step.answers.size(), 2U) << Shown(smallest);
        if (!IsReport(step))
            continue;
        EXPECT_EQ(std::make_tuple(step.code, step.type, step.flag), std::make_tuple(1, 1, false))
            << Shown(smallest);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ClientModelTest, testing::Range(0U, 10U));

} // namespace
