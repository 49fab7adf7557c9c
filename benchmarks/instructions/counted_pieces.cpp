// Does a fixed set of pieces of work, each once to warm up and once counted. Run under callgrind, which
// writes a file of counts for each piece; by itself it only shows that they work. scripts/bench
// --instructions does the rest. Nothing here depends on time, on other processes or on chance.
#include "subjects/Configurations.h"
#include "subjects/HandMadeErrors.h"
#include "subjects/MeasuredIds.h"
#include "subjects/Turner.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>

#include <valgrind/callgrind.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::size_t kErrors = 400;
constexpr int kTurns = 100;

using Ids = std::vector<std::pair<int, int>>;

void Count(const char* name, const std::function<void()>& piece)
{
    piece();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    piece();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name);
}

void Check(bool holds)
{
    if (!holds)
        throw std::runtime_error("a piece does not do what it should");
}

void CountLoading()
{
    Count("load the example configuration", [] { Check(CErrorDatabase(ExampleConfiguration()).Loaded()); });
    Count("load 400 errors in families",
          [] { Check(CErrorDatabase(ConfigurationOf(esPlausible, kErrors)).Loaded()); });
    Count("load 400 errors in diamonds",
          [] { Check(CErrorDatabase(ConfigurationOf(esDiamonds, kErrors)).Loaded()); });
    Count("load patterns", [] { CErrorOverlay(ConfigurationOf(esPlausible, kErrors)).GetCodes(); });
}

void CountTree(const char* name, EShape shape)
{
    CErrorDatabase& database = DatabaseOf(shape, kErrors);
    CTurner turner(database, shape);
    Count(name,
          [&]
          {
              for (int turn = 0; turn < kTurns; ++turn)
              {
                  turner.Next();
                  database.UpdateErrorTree();
              }
          });
}

void CountGrouping()
{
    CHandMadeErrors made(esChain, kErrors, elTriggersOnly);
    std::list<const CError*> errors;
    for (const CError& error : made.Errors())
        errors.push_back(&error);
    std::list<const CError*> tops;
    Count("group 400 errors linked by hand", [&] { made.Database().UpdateErrorTree(errors, tops); });
    Check(!tops.empty());
}

void CountRaising(const Ids& ids)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, kErrors);
    Count("raise and clear 400 errors, parents follow",
          [&]
          {
              for (const auto& id : ids)
                  database.RaiseError(id.first, id.second, false);
              for (const auto& id : ids)
                  database.ClearError(id.first, id.second, false);
          });
}

void CountOwner(CErrorDatabaseView& owner, const Ids& ids)
{
    Count("raise and clear 400 records one by one",
          [&]
          {
              for (const auto& id : ids)
                  Check(owner.RaiseError(id.first, id.second));
              for (const auto& id : ids)
                  Check(owner.ClearError(id.first, id.second));
          });
    Count("raise and clear 400 records together",
          [&] { Check(owner.RaiseErrors(ids) && owner.ClearErrors(ids)); });
    std::vector<SErrorChange> changes;
    for (const auto& id : ids)
        changes.push_back({id.first, id.second, changes.size() % 2 == 0});
    Count("apply 400 changes", [&] { Check(owner.ApplyChanges(changes) && owner.ClearErrors(ids)); });
}

void CountReader(CErrorDatabaseView& owner, const Ids& ids)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, kErrors);
    CErrorDatabaseView reader(false, eViewReader);
    reader.Synchronise(database);
    owner.RaiseErrors(ids);
    reader.Synchronise(database);
    Count("synchronise 100 times, nothing changed",
          [&]
          {
              for (int turn = 0; turn < kTurns; ++turn)
                  Check(reader.Synchronise(database) == 0);
          });
    Count("synchronise 100 times, one change each",
          [&]
          {
              for (std::size_t turn = 0; turn < kTurns; ++turn)
              {
                  const auto& id = ids[turn / 2 * 7];
                  Check(turn % 2 == 0 ? owner.ClearError(id.first, id.second)
                                      : owner.RaiseError(id.first, id.second));
                  Check(reader.Synchronise(database) != 0);
              }
          });
    Count("find 400 records",
          [&]
          {
              for (const auto& id : ids)
                  Check(reader.RetrieveErrorIndex(id.first, id.second) >= 0);
          });
}

void CountTrees(const Ids& ids)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, kErrors);
    CErrorDatabaseView view(false, eViewReader);
    view.Synchronise(database);
    const CErrorOverlay overlay(ConfigurationOf(esPlausible, kErrors));
    std::vector<SErrorTree> trees;
    const auto build = [&](bool keys)
    { CErrorPresentation::GetErrorTree(view, overlay, database.ActiveErrors(false), trees, keys); };
    Count("build all trees", [&] { build(false); });
    Count("build all trees with text keys", [&] { build(true); });
    Check(!trees.empty());
    Count("rebuild all trees",
          [&]
          {
              for (const SErrorTree& tree : trees)
              {
                  SErrorTree rebuilt;
                  std::vector<std::string> lines;
                  Ids codes;
                  CErrorPresentation::RegenerateErrorTree(tree.stateKey, database, view, rebuilt, lines,
                                                          codes, false);
                  Check(!lines.empty());
              }
          });
    Count("find 400 friendly codes",
          [&]
          {
              for (std::size_t place = 0; place < ids.size(); ++place)
                  overlay.FindFriendlyCode(
                      {ids[place], ids[place * 7 % ids.size()], ids[place * 11 % ids.size()]});
          });
    std::vector<SErrorEntry> entries;
    view.RetrieveAllErrors(entries);
    Count("format a list of 400 entries",
          [&]
          {
              std::vector<SErrorTree> list;
              CErrorPresentation::FormatErrorList(entries, list);
              Check(list.size() == kErrors);
          });
    Count("write texts", [&] { CErrorPresentation::DumpLocalisedText(database.GetErrorList(), "texts"); });
}

std::string Message(int code, int type, std::size_t number)
{
    BEncoderC encoder;
    BListC arguments;
    for (const int argument : {code, type, 0})
        arguments.Append(std::make_unique<BAtomC>(argument, &arguments));
    encoder.BeginDictionary();
    encoder.Text("args");
    encoder.Element(arguments);
    encoder.Text("name");
    encoder.Text("RaiseError");
    encoder.Text("seq");
    encoder.Integer(static_cast<std::int64_t>(number));
    encoder.End();
    return encoder.Bytes();
}

void CountMessages(const Ids& ids)
{
    std::string stream;
    Count("encode 400 messages",
          [&]
          {
              stream.clear();
              for (const auto& id : ids)
                  stream += Message(id.first, id.second, stream.size() + 1);
          });
    BDecoderC decoder;
    Count("decode 400 messages",
          [&]
          {
              std::size_t messages = 0;
              for (std::size_t at = 0; at < stream.size();)
              {
                  at += decoder.Feed(stream.data() + at, stream.size() - at);
                  messages += decoder.TakeMessage() != nullptr ? 1 : 0;
              }
              Check(messages == kErrors);
          });
}

void CountAll()
{
    const Support::CSharedTableDirectory directory;
    const Ids ids = MakeIdPairs(kErrors);
    CountLoading();
    CountTree("make the lists of tops 100 times, families", esPlausible);
    CountTree("make the lists of tops 100 times, chain", esChain);
    CountTree("make the lists of tops 100 times, diamonds", esDiamonds);
    CountGrouping();
    CountRaising(ids);
    CErrorDatabaseView owner(true, eViewOwner);
    Check(owner.LoadErrors(DatabaseOf(esPlausible, kErrors)) && owner.FaultkeeperReady(true));
    CountOwner(owner, ids);
    CountReader(owner, ids);
    CountTrees(ids);
    CountMessages(ids);
}
} // namespace

} // namespace Benchmarks

int main()
{
    try
    {
        Benchmarks::CountAll();
        return 0;
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
