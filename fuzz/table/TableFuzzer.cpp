// Whatever stands in the shared segment, readers copy it, replay it and build trees and lists from it, and an
// owner goes on working with it.
//
// An input is a row of steps: a byte that selects the step (see Step), then what it needs. At first the table
// is as its owner has loaded it.

#include "harness/Display.h"
#include "harness/Expectation.h"
#include "harness/Input.h"
#include "harness/Silence.h"

#include <Faultkeeper/ErrorDbViewChanged.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <cstring>
#include <set>

using namespace Faultkeeper;

namespace
{

constexpr int kMostSteps = 64;
constexpr std::size_t kLookUpEvery = 37; // record: each look-up walks along the table
constexpr std::size_t kTimeBytes = 2 * sizeof(Core::Time);

Fuzz::CDisplay& Display()
{
    static Fuzz::CDisplay display;
    return display;
}

void Write(std::size_t offset, const std::string& bytes)
{
    const std::size_t room = sizeof(SStatusTable) - offset;
    std::memcpy(reinterpret_cast<char*>(&Display().Table()) + offset, bytes.data(),
                std::min(room, bytes.size()));
}

SErrorEntry& Record(unsigned index)
{
    return Display().Table().records[index % static_cast<unsigned>(kStatusTableCapacity)];
}

std::size_t OffsetOf(const SErrorEntry& record)
{
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&record) -
                                    reinterpret_cast<const char*>(&Display().Table()));
}

/// Gives a record the identifier of an error that there is; flags, counters and times come as they are.
void WriteRecord(Fuzz::CInput& input)
{
    SErrorEntry& record = Record(input.Word());
    const std::vector<CError>& errors = Display().Database().GetErrorList();
    const CError& error = errors[input.Byte() % errors.size()];
    record.problemCode = error.ProblemCode();
    record.problemType = static_cast<std::int16_t>(error.ProblemType());
    record.flags = input.Byte();
    record.counter1 = static_cast<std::uint16_t>(input.Word());
    record.counter2 = static_cast<std::uint16_t>(input.Word());
    Write(OffsetOf(record) + offsetof(SErrorEntry, raisedTime), input.Text(kTimeBytes));
}

/// Each known error that a record says is raised.
std::set<const CError*> RaisedErrors(const std::vector<SErrorEntry>& records)
{
    std::set<const CError*> raised;
    for (const SErrorEntry& record : records)
    {
        const CError* const error =
            Display().Database().RetrieveError(record.problemCode, record.problemType);
        if (error != nullptr && (record.flags & kRaisedFlag) != 0)
            raised.insert(error);
    }
    return raised;
}

void Synchronise()
{
    CErrorDatabaseView& reader = Display().Reader();
    const int result = reader.Synchronise(Display().Database());
    Fuzz::Expect(result >= 0 && result <= 2, "a synchronisation tells one of three things");
    Fuzz::Expect(result == 0 || reader.FaultkeeperReady(),
                 "nothing is replayed from a table that is not ready");
    std::vector<SErrorEntry> records;
    reader.RetrieveAllErrors(records);
    Fuzz::Expect(records.size() <= static_cast<std::size_t>(kStatusTableCapacity),
                 "no more records than fit");
    for (std::size_t i = 0; i < records.size(); i += kLookUpEvery)
    {
        const int index = reader.RetrieveErrorIndex(records[i].problemCode, records[i].problemType);
        Fuzz::Expect(index >= 0 && index <= static_cast<int>(i), "every record is found");
    }
}

/// A display that starts with nothing active follows the table that it sees first.
void SynchroniseFromNothing()
{
    Display().Reader().SetCallback(nullptr);
    SStatusTable table;
    std::memcpy(static_cast<void*>(&table), &Display().Table(), sizeof table);
    Display().Reset();
    Write(0, std::string(reinterpret_cast<const char*>(&table), sizeof table));
    Synchronise();
    if (table.header.ready != 1)
        return;
    std::vector<SErrorEntry> records;
    Display().Reader().RetrieveAllErrors(records);
    const std::set<const CError*> raised = RaisedErrors(records);
    for (const CError& error : Display().Database().GetErrorList())
        Fuzz::Expect(error.Active() == (raised.count(&error) != 0), "exactly what the table says is active");
}

void BuildTrees(bool useTextKeys)
{
    for (const bool changedOnly : {false, true})
    {
        std::vector<SErrorTree> trees;
        const std::list<const CError*>& tops = Display().Database().ActiveErrors(changedOnly);
        CErrorPresentation::GetErrorTree(Display().Reader(), Display().Overlay(), tops, trees, useTextKeys);
        Fuzz::Expect(trees.size() == tops.size(), "a tree for each top");
        for (const SErrorTree& tree : trees)
            Fuzz::Expect(Fuzz::RebuildTree(Display(), tree.stateKey), "a tree's key can be read");
        CErrorPresentation::PrintErrorTree(tops);
    }
}

void List(CErrorDatabaseView& view)
{
    std::vector<SErrorEntry> records;
    view.RetrieveAllErrors(records);
    std::vector<SErrorTree> history;
    CErrorPresentation::FormatErrorList(records, history);
    Fuzz::Expect(history.size() <= records.size(), "a history lists records");
    for (std::size_t i = 1; i < history.size(); ++i)
        Fuzz::Expect(history[i - 1].raisedTime >= history[i].raisedTime, "a history lists the newest first");
}

void LookUp(int index)
{
    constexpr int kUntouched = 12345;
    int code = kUntouched;
    int type = kUntouched;
    const int result = Display().Reader().RetrieveErrorFromIndex(index, code, type);
    if (result == 1)
        Fuzz::Expect(index >= 0 && index < kStatusTableCapacity, "only records are found");
    else
        Fuzz::Expect(result == -1 && code == kUntouched && type == kUntouched,
                     "nothing changes without a record");
}

/// Raises or clears one error, or the same one twice in a row of errors.
void Change(const SErrorEntry& record, bool raised, bool inRow)
{
    CErrorDatabaseView& owner = Display().Owner();
    const int code = record.problemCode;
    const int type = record.problemType;
    const std::vector<std::pair<int, int>> row = {{code, type}, {-1, -1}, {code, type}};
    bool written = false;
    if (inRow)
        written = raised ? owner.RaiseErrors(row) : owner.ClearErrors(row);
    else
        written = raised ? owner.RaiseError(code, type) : owner.ClearError(code, type);
    Fuzz::Expect(written, "an owner can always write");
}

/// Restores what the reading view has seen.
void Restore()
{
    std::vector<SErrorEntry> records;
    Display().Reader().RetrieveAllErrors(records);
    Fuzz::Expect(Display().Owner().UpdateErrorDetails(records), "an owner can always write");
}

/// Looks up records once more when they are replayed, as screens do.
class CListener : public CErrorDbViewChanged
{
    void ErrorEntryChanged(const SErrorEntry& entry) override
    {
        if (m_calls++ % kLookUpEvery != 0)
            return;
        SErrorEntry found;
        Display().Reader().RetrieveErrorDetails(entry.problemCode, entry.problemType, found);
        Fuzz::Expect(found.problemCode == entry.problemCode && found.problemType == entry.problemType,
                     "a record that is replayed can be found");
    }

    std::size_t m_calls = 0;
};

void WriteStep(std::uint8_t kind, Fuzz::CInput& input)
{
    if (kind == 0)
    {
        const std::size_t offset = input.Word() % sizeof(SStatusTable);
        Write(offset, input.Text(input.Byte()));
    }
    else if (kind == 1)
        WriteRecord(input);
    else if (kind == 2)
        Write(0, input.Text(sizeof(SStatusHeader)));
    else
        Write(0, std::string(sizeof(SStatusTable), static_cast<char>(input.Byte())));
}

void OwnerStep(std::uint8_t kind, Fuzz::CInput& input)
{
    const SErrorEntry record = Record(input.Byte());
    if (kind == 0)
    {
        const std::uint8_t choice = input.Byte();
        Change(record, (choice & 1) != 0, (choice & 2) != 0);
    }
    else if (kind == 1)
        List(Display().Owner());
    else if (kind == 2)
        Restore();
    else
        Display().Owner().LoadErrors(Display().Database());
}

void ReadStep(std::uint8_t kind, Fuzz::CInput& input)
{
    if (kind == 0)
        BuildTrees((input.Byte() & 1) != 0);
    else if (kind == 1)
        List(Display().Reader());
    else if (kind == 2)
        LookUp(static_cast<int>(input.Word()) - 0x8000);
    else if (kind == 3)
        Display().Reader().Initialise();
    else
        Display().Reader().UpdateErrorStatus(Display().Database(), (input.Byte() & 1) != 0);
}

void Step(Fuzz::CInput& input)
{
    const std::uint8_t step = input.Byte() % 16;
    if (step < 4)
        WriteStep(step, input);
    else if (step < 8)
        OwnerStep(static_cast<std::uint8_t>(step - 4), input);
    else if (step < 13)
        ReadStep(static_cast<std::uint8_t>(step - 8), input);
    else if (step == 13)
        SynchroniseFromNothing();
    else
        Synchronise();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Display();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const Fuzz::CSilence silence;
    CListener listener;
    Display().Reset();
    Display().Reader().SetCallback(&listener);
    Fuzz::CInput input(bytes, size);
    for (int steps = 0; steps < kMostSteps && !input.AtEnd(); ++steps)
        Step(input);
    SynchroniseFromNothing(); // takes the listener away
    BuildTrees(false);
    Fuzz::Expect(!Display().Reader().Failed() && !Display().Owner().Failed(),
                 "the bytes of a table break no view");
    return 0;
}
