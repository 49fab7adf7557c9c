"""The lines of the table: what is compared with what, and the limit it has to keep."""

from dataclasses import dataclass
from typing import Optional


@dataclass(frozen=True)
class Line:
    """The cost of one benchmark as a multiple of another's."""
    what: str
    ours: str
    base: Optional[str]
    baseline: str
    size: int = 400
    limit: Optional[float] = None


@dataclass(frozen=True)
class Growth:
    """The exponent with which a cost grows with the size, from 400 on."""
    what: str
    ours: str
    limit: Optional[float] = None


@dataclass(frozen=True)
class GrowthBeside:
    """The same beside that of a plain walk: beyond the cache every walk's exponent is above 1."""
    what: str
    ours: str
    base: str
    baseline: str
    above: float  # the other's, at most


@dataclass(frozen=True)
class Rate:
    """How many a second, at least, and as a multiple of a baseline's."""
    what: str
    ours: str
    base: str
    baseline: str
    least: float
    times: Optional[float] = None
    size: int = 400


@dataclass(frozen=True)
class Memory:
    """Resident memory of a program, in MiB."""
    what: str
    key: str
    limit: Optional[float] = None


LITERAL = "the passes, word for word"
LEVELS = "level by level, word for word"
POSITIONS_ABOVE = 0.3  # how much memory slows two walks down differs by less; a quadratic step would add 1
LOOK_UP = "the look-up in the map"
COPY = "a copy of the result"

LINES = (
    Line("UpdateErrorTree, families", "tree-plausible/ours", "tree-plausible/base", LITERAL, limit=0.01),
    Growth("its growth, families", "tree-plausible/ours", limit=1.15),
    Growth("its growth, chain", "tree-chain/ours", limit=1.15),
    Growth("its growth, diamonds", "tree-diamonds/ours", limit=1.15),
    Line("Synchronise, nothing changed, before the first change", "synchronise-before-changes/ours",
         "lock-copy-unlock-time/base", "lock, copy, unlock, time", limit=1.2),
    Line("Synchronise, nothing changed, later", "synchronise-after-changes/ours", "lock-copy-unlock-time/base",
         "lock, copy, unlock, time", limit=2.0),
    Line("Synchronise, one change", "synchronise-one-change/ours", "lock-copy-unlock-time/base",
         "lock, copy, unlock, time", limit=40.0),
    Line("RaiseError of the owning view", "view-raise/ours", "lock-clocks-unlock-wake/base",
         "lock, two clock readings, unlock, wake", limit=1.25),
    Line("RaiseErrors, per identifier", "view-raise-together/ours", "view-raise/ours", "RaiseError", limit=0.125),
    Line("CFaultkeeperAPI::RaiseError, repeat", "client-repeat/ours", "client-repeat/base", LOOK_UP, limit=1.5),
    Line("CFaultkeeperAPI::RaiseError, sent", "client-send/ours", "client-send/base",
         "a bare send, same socket options", limit=1.5),
    GrowthBeside("growth of positions, families", "positions-plausible/ours", "positions-plausible/base", LEVELS,
                 above=POSITIONS_ABOVE),
    GrowthBeside("growth of positions, chain", "positions-chain/ours", "positions-chain/base", LEVELS,
                 above=POSITIONS_ABOVE),
    # Level by level never ends in large lattices, so these are compared with families.
    GrowthBeside("growth of positions, diamonds", "positions-diamonds/ours", "positions-plausible/base",
                 LEVELS + ", families", above=POSITIONS_ABOVE),
    Line("loading, families", "load-plausible/ours", "load-plausible/base", "Expat without handlers", limit=3.0),
    Growth("its growth, families", "load-plausible/ours", limit=1.1),
    Growth("its growth, chain", "load-chain/ours", limit=1.1),
    Growth("its growth, diamonds", "load-diamonds/ours", limit=1.1),
    Line("one report to the owner's table, p50", "report-to-table/ours", "report-to-table/base",
         "one-way loopback TCP, same bytes", limit=2.0),
    Line("one report to a waiting display's copy, p50", "report-to-display/ours", "report-to-display/base",
         "one-way loopback TCP, same bytes", limit=4.0),
    Rate("reports through client, owner and table", "throughput-singles/ours", "throughput/base",
         "bare messages, no-delay", least=1e6, times=1.5),
    Rate("the same, confirmed and stored", "throughput-stored/ours", "throughput-stored/base", "bare messages, no-delay",
         least=3e5),
    Memory("faultkeeperd with 400 errors, no store, resident", "faultkeeperd resident", limit=8.0),
    Memory("the same, with its store", "faultkeeperd with a store resident", limit=8.0),
    # What follows has no limit of its own.
    Rate("reports whose parents follow", "throughput-families/ours", "throughput/base", "bare messages, no-delay",
         least=0.0),
    Line("UpdateErrorTree, chain", "tree-chain/ours", "tree-chain/base", LITERAL),
    Line("UpdateErrorTree, 30 errors in diamonds", "tree-diamonds/ours", "tree-diamonds/base", LITERAL, size=30),
    Line("UpdateErrorTree, nothing changed", "tree-unchanged/ours", "tree-unchanged/base", LITERAL),
    Line("grouping step alone, families", "group-plausible/ours", "group-plausible/base", LITERAL),
    Line("grouping step alone, chain", "group-chain/ours", "group-chain/base", LITERAL),
    Line("grouping by hand, triggers only, families", "group-plausible-triggers-only/ours",
         "group-plausible-triggers-only/base", LITERAL),
    Line("grouping by hand, parents only, families", "group-plausible-parents-only/ours",
         "group-plausible-parents-only/base", LITERAL),
    Line("grouping by hand, triggers only, chain", "group-chain-triggers-only/ours", "group-chain-triggers-only/base",
         LITERAL),
    Line("grouping by hand, parents only, chain", "group-chain-parents-only/ours", "group-chain-parents-only/base",
         LITERAL),
    Line("positions, families", "positions-plausible/ours", "positions-plausible/base", LEVELS),
    Line("positions, 30 errors in diamonds", "positions-diamonds/ours", "positions-diamonds/base", LEVELS, size=30),
    Line("loading the example's 243 errors", "load-example/ours", "load-example/base", "Expat without handlers",
         size=243),
    Line("loading patterns", "load-patterns/ours", "load-patterns/base", "Expat without handlers"),
    Line("RaiseError of the database, silent", "raise-silent/ours", "raise-silent/base", LOOK_UP),
    Line("RaiseError of the database, parents follow", "raise-propagating/ours", "raise-propagating/base", LOOK_UP),
    Line("RetrieveError", "retrieve-error/ours", "retrieve-error/base", LOOK_UP),
    Line("RetrieveErrorIndex", "retrieve-index/ours", "retrieve-index/base", "a search from the first record on"),
    Line("RetrieveAllErrors", "retrieve-all/ours", "retrieve-all/base", "a copy of the records"),
    Line("ClearError of the owning view", "view-clear/ours", "lock-clocks-unlock-wake/base",
         "lock, two clock readings, unlock, wake"),
    Line("ClearErrors, per identifier", "view-clear-together/ours", "view-clear/ours", "ClearError"),
    Line("ApplyChanges, per change", "view-apply-changes/ours", "view-raise/ours", "RaiseError"),
    Line("UpdateErrorDetails, per record", "view-update-details/ours", None, ""),
    Line("RestoreErrors, per record", "view-restore/ours", None, ""),
    Line("CFaultkeeperAPI::RaiseError, sent, not welcomed", "client-send-unwelcomed/ours",
         "client-send-unwelcomed/base", "a bare send, same socket options"),
    Line("CFaultkeeperAPI::RaiseError, kept", "client-keep/ours", "client-repeat/base", LOOK_UP),
    Line("ProcessQueuedErrors, per report kept", "client-hand-over/ours", "client-send/base",
         "a bare send, same socket options"),
    Line("GetErrorTree, all active tops", "build-trees/ours", "build-trees/base", COPY),
    Line("GetErrorTree, text keys", "build-trees-keys/ours", "build-trees-keys/base", COPY),
    Line("RegenerateErrorTree, all of these", "rebuild-trees/ours", "rebuild-trees/base", "lock, unlock, copies"),
    Line("RegenerateErrorTree, below the tops", "rebuild-below/ours", "rebuild-below/base", COPY),
    Line("BuildErrorTree, 400 levels", "build-chain/ours", "build-chain/base", COPY),
    Line("RegenerateErrorTree, 400 levels, plain", "rebuild-chain/ours", "rebuild-chain/base", COPY),
    Line("FindFriendlyCode", "find-code/ours", "find-code/base", "the search, word for word"),
    Line("FormatErrorList", "format-list/ours", "format-list/base", COPY),
    Line("DumpLocalisedText", "dump-texts/ours", "dump-texts/base", "writing the same lines"),
)

# Series whose growth is told: from 400 errors on if there are so many, otherwise all sizes.
SERIES = (
    ("UpdateErrorTree, families", "tree-plausible"), ("UpdateErrorTree, chain", "tree-chain"),
    ("UpdateErrorTree, diamonds", "tree-diamonds"),
    ("grouping step, families", "group-plausible"), ("grouping step, chain", "group-chain"),
    ("grouping step, diamonds", "group-diamonds"),
    ("grouping by hand, triggers only, families", "group-plausible-triggers-only"),
    ("grouping by hand, triggers only, chain", "group-chain-triggers-only"),
    ("grouping by hand, triggers only, diamonds", "group-diamonds-triggers-only"),
    ("grouping by hand, parents only, families", "group-plausible-parents-only"),
    ("grouping by hand, parents only, chain", "group-chain-parents-only"),
    ("grouping by hand, parents only, diamonds", "group-diamonds-parents-only"),
    ("positions, families", "positions-plausible"), ("positions, chain", "positions-chain"),
    ("positions, diamonds", "positions-diamonds"),
    ("loading, families", "load-plausible"), ("loading, chain", "load-chain"), ("loading, diamonds", "load-diamonds"),
    ("loading patterns", "load-patterns"), ("UpdateErrorTree, nothing changed", "tree-unchanged"),
    ("RaiseError of the database, silent, each", "raise-silent"),
    ("RaiseError of the database, parents follow, each", "raise-propagating"), ("RetrieveError, each", "retrieve-error"),
    ("Synchronise, one change", "synchronise-one-change"), ("RetrieveErrorIndex, each", "retrieve-index"),
    ("RetrieveAllErrors", "retrieve-all"),
    ("GetErrorTree", "build-trees"), ("GetErrorTree, text keys", "build-trees-keys"),
    ("RegenerateErrorTree", "rebuild-trees"), ("RegenerateErrorTree, below the tops", "rebuild-below"),
    ("BuildErrorTree, levels of a chain", "build-chain"),
    ("RegenerateErrorTree, levels of a chain, plain", "rebuild-chain"), ("FormatErrorList", "format-list"),
    ("FindFriendlyCode", "find-code"), ("DumpLocalisedText", "dump-texts"),
    ("CFaultkeeperAPI::RaiseError, repeat, each", "client-repeat"),
    ("CFaultkeeperAPI::RaiseError, sent, each", "client-send"),
    ("CFaultkeeperAPI::RaiseError, sent, not welcomed, each", "client-send-unwelcomed"),
    ("CFaultkeeperAPI::RaiseError, kept, each", "client-keep"),
    ("ProcessQueuedErrors, each report kept", "client-hand-over"),
    ("one report to the owner's table, by its errors", "report-to-table"),
    ("one report to a waiting display's copy, by its errors", "report-to-display"),
    ("a report through client, owner and table, by its errors", "throughput-singles"),
    ("the same, confirmed and stored", "throughput-stored"),
)
