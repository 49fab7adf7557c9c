#pragma once

#include <Faultkeeper/ErrorDatabaseView.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// What views do to the shared table, as data: so that it can be done to the views and to a model of them,
/// and to both again with something left out.
namespace Models
{

enum EOperation
{
    eoRaise,           ///< one error
    eoClear,           ///< one error
    eoRaiseSome,       ///< the errors of the items
    eoClearSome,       ///< the errors of the items
    eoApply,           ///< raises and clears, as the items say
    eoRemember,        ///< puts counters and times back
    eoRestore,         ///< puts whole records back
    eoDeclareReady,    ///< ready or, without the flag, not ready
    eoLoad,            ///< all errors in their order or, with the flag, some in another
    eoAskReady,        ///< is the table ready?
    eoSynchronise,     ///< with the view's own database
    eoInitialise,      ///< as Synchronise does it by itself
    eoReplay,          ///< as Synchronise does it by itself; with the flag, all that is raised
    eoRetrieveAll,     ///< every record
    eoRetrieveDetails, ///< one error's record
    eoRetrieveIndex,   ///< one error's position
    eoRetrieveAt,      ///< the identifier at a position
    eoMakeOwner,       ///< an owning view takes the view's place; with the flag it creates the table
    eoMakeReader,      ///< a reading view likewise
    eoMakeFailedOwner, ///< an owning view likewise, which fails: its table is too small
    eoOperations
};

/// One error among several, and what is remembered of it.
struct SItem
{
    int error = 0; ///< number of the error
    bool raised = false;
    std::uint16_t counter1 = 0;
    std::uint16_t counter2 = 0;
    int raisedHours = 0; ///< from now
    int clearedHours = 0;
};

struct SOperation
{
    EOperation kind = eoRaise;
    int view = 0;      ///< number of the view that does it
    bool busy = false; ///< has somebody else the lock meanwhile?
    int number = 0;    ///< of the error, or a position
    bool flag = false; ///< see EOperation
    std::vector<SItem> items;
};

typedef std::vector<SOperation> TScript;

/// One line for each operation.
std::string Shown(const SOperation& operation);
std::string Shown(const TScript& script);

/// The scripts with something less: operations and, once they are few, items and somebody who has the lock.
std::vector<TScript> SmallerScripts(const TScript& whole);

/// Where random scripts take place.
struct SStage
{
    int errors;                                ///< of the table; one more is known to nobody
    std::vector<Faultkeeper::EViewType> views; ///< at the beginning; the first one creates the table
    int restless;                              ///< so many of the views, from the first one, are replaced
    int busyEach;                              ///< the lock is busy once in so many operations; 0 for never
};

/// What some of the errors are loaded as: in another order, one of them twice.
constexpr int kShuffled[] = {4, 2, 0, 3, 2};

/// Makes random scripts, mostly of operations that are allowed where they take place.
class CScriptMaker
{
public:
    CScriptMaker(unsigned seed, SStage stage) : m_random(seed), m_stage(std::move(stage)) {}

    /// @param beginning  comes before what is random
    TScript Made(int operations, const TScript& beginning);

private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool Once(int each) { return each > 0 && Below(each) == 0; }
    EOperation AnyKind();
    int AnyView(EOperation kind);
    int AnyViewOf(Faultkeeper::EViewType type);
    SItem AnyItem();
    SOperation Any();

    std::mt19937 m_random;
    SStage m_stage;
};

} // namespace Models
