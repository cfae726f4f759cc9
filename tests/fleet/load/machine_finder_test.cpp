// Inventories that contain different things about one machine, in any order.
#include "fleet/load/machine_finder.h"

#include "fleet/load/batch_builder.h"
#include "fleet/sqlite/sqlite_store.h"
#include "tests/fleet/load/made_documents.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <numeric>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

constexpr char uuidName[] = "uuid:4C4C4544-0042-3510-8052-B4C04F4A3132";
constexpr char sharedUuid[] = "03000200-0400-0500-0006-000700080009";

struct TSource {
    EScope scope;
    TMachineTraits traits;
};

TMachineTraits MakeTraits(const std::string& folder, const std::string& name) {
    TMachineTraits traits;
    traits.facts = {name, "Example Servers", "7915-X3G", "", ""};
    traits.pathPart = folder;
    return traits;
}

TSource WithSerial(TSource source, const std::string& serial) {
    source.traits.facts.serial = serial;
    source.traits.system = "Example Servers,7915-X3G-" + serial;
    return source;
}

// The documents and snapshots of root and of an ordinary user, who can read neither serial number nor UUID.
TSource MakeHardware(const std::string& folder, const std::string& uuid) {
    TSource source{EScope::hardware, MakeTraits(folder, "")};
    source.traits.facts.uuid = uuid;
    return source;
}

TSource MakeSystem(const std::string& folder, const std::string& name) {
    return {EScope::systemInformation, MakeTraits(folder, name)};
}

TSource MakeSnapshot(const std::string& folder, const std::string& uuid, const std::string& name,
                     const std::string& address) {
    TSource source{EScope::snapshot, MakeTraits(folder, name)};
    source.traits.facts.uuid = uuid;
    source.traits.address = address;
    return source;
}

class FleetMachineFinder : public testing::Test {
  protected:
    FleetMachineFinder() { Reset(); }

    // Starts with an empty store.
    void Reset() {
        store_.reset();
        folder_ = std::make_unique<TLoadFolder>();
        store_ = OpenSqliteStore(folder_->GetPath("fleet.db"));
        store_->Migrate();
        time_ = firstOfMarch;
    }

    void LoadBatch(const std::vector<TSource>& sources) {
        std::vector<TReadInventory> inventories;
        for (const TSource& source : sources) {
            TReadInventory& read = inventories.emplace_back();
            read.inventory.place.scope = source.scope;
            read.inventory.time = ++time_;
            read.inventory.digest = MakeDigest(std::to_string(time_));
            read.traits = source.traits;
        }
        store_->BeginBatch();
        TBatchBuilder builder(*store_);
        builder.Add(std::move(inventories));
        store_->Write(builder.Take());
    }

    // Loads each in a batch of its own.
    void Load(const std::vector<TSource>& sources) {
        for (const TSource& source : sources) {
            LoadBatch({source});
        }
    }

    std::vector<std::string> ListKeys() {
        std::vector<std::string> keys;
        for (const TMachine& machine : store_->ReadMachines()) {
            keys.push_back(machine.key + ": " +
                           std::to_string(store_->ReadInventories({.machine = machine.id}).size()));
        }
        return keys;
    }

    // Loads the sources in every order, twice, batch by batch and together.
    void ExpectOneMachine(std::vector<TSource> sources, const std::string& key) {
        std::vector<std::size_t> order(sources.size());
        std::iota(order.begin(), order.end(), 0U);
        do {
            for (const bool isTogether : {false, true}) {
                Reset();
                std::vector<TSource> ordered;
                std::string shown;
                for (const std::size_t i : order) {
                    ordered.push_back(sources[i]);
                    shown += std::to_string(i);
                }
                isTogether ? LoadBatch(ordered) : Load(ordered);
                Load(ordered);
                EXPECT_THAT(ListKeys(), ElementsAre(key + ": " + std::to_string(2 * sources.size())))
                    << "order " << shown << (isTogether ? " together" : "");
            }
        } while (std::ranges::next_permutation(order).found);
    }

    std::unique_ptr<TLoadFolder> folder_;
    std::unique_ptr<IFleetStore> store_;
    TSeconds time_ = 0;
};

TEST_F(FleetMachineFinder, FindsOneMachineWithoutSerialNumberInDocumentsAndSnapshots) {
    ExpectOneMachine(
        {MakeHardware("C0FFEE", webUuid), MakeSnapshot("web-1", webUuid, "web-1", "02005E200001")},
        std::string(uuidName) + " address:02005E200001");
}

TEST_F(FleetMachineFinder, FindsOneMachineWithoutUuidInDocumentsAndSnapshots) {
    ExpectOneMachine(
        {WithSerial(MakeHardware("a", sharedUuid), "S1"), WithSerial(MakeSystem("b", "web-1"), "S1"),
         WithSerial(MakeSnapshot("c", sharedUuid, "web-1", "02005E200001"), "S1")},
        "system:Example Servers,7915-X3G-S1");
}

TEST_F(FleetMachineFinder, FindsTheMachineOfASystemInformationDocumentThatArrivesAlone) {
    ExpectOneMachine(
        {WithSerial(MakeHardware("a", webUuid), "S1"), WithSerial(MakeSystem("b", "web-1"), "S1"),
         WithSerial(MakeSnapshot("c", webUuid, "web-1", "02005E200001"), "S1")},
        std::string(uuidName) + " serial:S1");
}

TEST_F(FleetMachineFinder, FindsOneMachineInSnapshotsOfRootAndOfAnOrdinaryUser) {
    ExpectOneMachine({WithSerial(MakeSnapshot(webUuid, webUuid, "web-1", "02005E200001"), "S1"),
                      MakeSnapshot("home", "", "web-1", "02005E200001")},
                     std::string(uuidName) + " serial:S1");
}

TEST_F(FleetMachineFinder, FindsOneMachineInDocumentsOfRootAndOfAnOrdinaryUser) {
    TSource root = WithSerial(MakeHardware(webUuid, webUuid), "S1");
    root.traits.facts.name = "web-1";  // from the system information of the same folder

    ExpectOneMachine({root, MakeHardware("web-1", ""), MakeSystem("web-1", "web-1")},
                     std::string(uuidName) + " serial:S1");
}

TEST_F(FleetMachineFinder, FindsAMachineWhoseSerialNumberAppearsLater) {
    ExpectOneMachine({MakeHardware("a", webUuid), WithSerial(MakeHardware("a", webUuid), "S1")},
                     std::string(uuidName) + " serial:S1");
}

TEST_F(FleetMachineFinder, SeparatesMachinesWithOneUuidByAddress) {
    Load({MakeSnapshot("a", webUuid, "", "02005E200001"), MakeSnapshot("b", webUuid, "", "02005E200002"),
          MakeSnapshot("a", webUuid, "", "02005E200001"), MakeSnapshot("b", webUuid, "", "02005E200002")});

    EXPECT_THAT(ListKeys(), UnorderedElementsAre(std::string(uuidName) + " address:02005E200001: 2",
                                                 std::string(uuidName) + " address:02005E200002: 2"));
}

TEST_F(FleetMachineFinder, SeparatesMachinesWithOneUuidBySerialNumber) {
    Load({WithSerial(MakeHardware("a", webUuid), "S1"), WithSerial(MakeHardware("b", webUuid), "S2"),
          MakeHardware("c", webUuid), MakeHardware("c", webUuid)});

    EXPECT_THAT(ListKeys(),
                UnorderedElementsAre(std::string(uuidName) + " serial:S1: 1",
                                     std::string(uuidName) + " serial:S2: 1", std::string(uuidName) + ": 2"))
        << "a UUID of two machines names neither";
}

TEST_F(FleetMachineFinder, KeepsANameApartThatTwoMachinesHaveHad) {
    Load({MakeHardware("a", webUuid), WithSerial(MakeHardware("a", webUuid), "S1"),
          WithSerial(MakeHardware("b", webUuid), "S2"), MakeHardware("c", webUuid),
          MakeHardware("c", webUuid)});

    EXPECT_THAT(ListKeys(),
                UnorderedElementsAre(std::string(uuidName) + " serial:S1: 2",
                                     std::string(uuidName) + " serial:S2: 1", std::string(uuidName) + ": 2"));
}

TEST_F(FleetMachineFinder, SeparatesMachinesOfOneFolder) {
    Load({WithSerial(MakeSnapshot("incoming", webUuid, "web-1", ""), "S1"),
          MakeSnapshot("incoming", "", "web-2", "")});

    EXPECT_THAT(ListKeys(),
                UnorderedElementsAre(std::string(uuidName) + " serial:S1: 1", "path:incoming: 1"));
}

TEST_F(FleetMachineFinder, SeparatesMachinesWithoutIdentityOfOneHostName) {
    Load({MakeSystem("a", "localhost"), MakeSystem("b", "localhost")});

    EXPECT_THAT(ListKeys(), UnorderedElementsAre("path:a: 1", "path:b: 1"));
}

TEST_F(FleetMachineFinder, SeparatesMachinesOfOtherModelsWithOneAddress) {
    TSource dock = MakeSnapshot("b", "", "web-1", "02005E200001");
    dock.traits.facts.model = "Laptop";

    Load({WithSerial(MakeSnapshot("a", webUuid, "web-1", "02005E200001"), "S1"), dock});

    EXPECT_THAT(ListKeys(), SizeIs(2));
}

TEST_F(FleetMachineFinder, KeepsMergedMachinesTogether) {
    Load({WithSerial(MakeHardware("a", webUuid), "S1"), WithSerial(MakeHardware("a", dbUuid), "S1")});
    MergeMachines(std::string(uuidName) + " serial:S1", std::string("uuid:") + dbUuid + " serial:S1",
                  *store_);

    Load({WithSerial(MakeHardware("a", webUuid), "S1"), WithSerial(MakeSystem("c", "web-1"), "S1")});

    const std::string merged = std::string("uuid:") + dbUuid + " serial:S1: 3";
    EXPECT_THAT(ListKeys(), UnorderedElementsAre(merged, "system:Example Servers,7915-X3G-S1: 1"))
        << "both boards had the name of the system information before they were merged";
}

TEST_F(FleetMachineFinder, MergesAMachineThatGotABetterKey) {
    Load({MakeHardware("a", webUuid), WithSerial(MakeHardware("a", webUuid), "S1"),
          WithSerial(MakeHardware("b", dbUuid), "S2")});
    const std::string old = std::string(uuidName) + " serial:S1";
    const std::string kept = std::string("uuid:") + dbUuid + " serial:S2";

    MergeMachines(old, kept, *store_);
    MergeMachines(old, kept, *store_);
    Load({WithSerial(MakeHardware("a", webUuid), "S1"), MakeHardware("a", webUuid)});

    EXPECT_THAT(ListKeys(), ElementsAre(kept + ": 5"));
}

}  // namespace
}  // namespace NFLEET
