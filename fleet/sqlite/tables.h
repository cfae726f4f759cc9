// The statements of a store on its tables.
#pragma once

#include "fleet/sqlite/connection.h"
#include "fleet/sqlite/dictionary.h"

namespace NFLEET {

/// Everything that is prepared once for a connection whose tables exist.
struct TTables {
    explicit TTables(TConnection& connection);

    TWordTable words;
    TDigestTable machines;
    TDigestTable resources;
    TDigestTable versions;
    TDigestTable forms;
    TDigestTable layouts;

    TStatement insertResource;
    TStatement insertResourceKey;
    TStatement insertVersion;
    TStatement insertProperty;
    TStatement insertForm;
    TStatement insertLayout;
    TStatement writePresence;
    TStatement removePresence;
    TStatement insertPart;
    TStatement writeMachine;
    TStatement insertMachineSearch;
    TStatement writeHead;
    TStatement writeInventory;
    TStatement writeAlias;
    TStatement writeSource;
    TStatement removeInventory;
    TStatement removeHead;

    TStatement findSource;
    TStatement findAlias;
    TStatement readAliasesOf;
    TStatement readMachine;
    TStatement findNamedMachines;
    TStatement readHeads;
    TStatement readInventories;
    TStatement findInventory;
    TStatement readPresences;
    TStatement readProperties;
    TStatement readVersion;
    TStatement readForm;
    TStatement readLayout;

    /// Forgets what another connection may have changed.
    void Forget();
};

}  // namespace NFLEET
