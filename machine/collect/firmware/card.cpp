// KELSG_Card: one instance per board of the SMBIOS table; without a table one for the board of
// /sys/class/dmi/id.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/named_place.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_system.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

struct TCard {
    std::optional<std::string> elementName, description, manufacturer, model, serialNumber, tag, version,
        userTracking;
    std::optional<std::uint16_t> removalConditions;
    std::optional<bool> hostingBoard, requiresDaughterBoard;
    TInstancePlace place{};
};

struct TFoundBoard {
    TSmbiosBoard fields;
    const TSmbiosStructure* structure = nullptr;
};

constexpr TPropertyRow<TCard> cardRows[] = {
    {"ElementName", &TCard::elementName, "property Manufacturer; property Model"},
    {"Description", &TCard::description, "type 2, 0Dh"},
    {"ManufactureDate", TUnavailable{ECimType::eDateTime}, "none: no such field"},
    {"Manufacturer", &TCard::manufacturer, "text type 2, 04h or /sys/class/dmi/id/board_vendor"},
    {"Model", &TCard::model, "text type 2, 05h or /sys/class/dmi/id/board_name"},
    {"PartNumber", TUnavailable{ECimType::eString}, "none: no such field"},
    {"SerialNumber", &TCard::serialNumber, "text type 2, 07h or /sys/class/dmi/id/board_serial"},
    {"Tag", &TCard::tag, "text type 2, 0Ah"},
    {"Version", &TCard::version, "text type 2, 06h or /sys/class/dmi/id/board_version"},
    {"RemovalConditions", &TCard::removalConditions, "type 2, 09h"},
    {"UserTracking", &TCard::userTracking, "text type 2, 08h or /sys/class/dmi/id/board_asset_tag"},
    {"HostingBoard", &TCard::hostingBoard, "type 2, 09h bit 0"},
    {"RequiresDaughterBoard", &TCard::requiresDaughterBoard, "type 2, 09h bit 1"},
    {"SpecialRequirements", TUnavailable{ECimType::eBoolean}, "none: no such field"},
};

constexpr TCimClass<TCard> cardClass{"KELSG_Card", cardRows};
constexpr const IClassDeclaration* classes[] = {&cardClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 4>{
                                                        "/sys/class/dmi/id",
                                                        "/sys/class/dmi/id/board_*",
                                                        "/sys/devices/virtual/dmi/id",
                                                        "/sys/devices/virtual/dmi/id/board_*",
                                                    });

constexpr std::string_view boardWord = "Baseboard";

struct TBoardKind {
    std::uint8_t code;
    std::string_view name;
};

// DSP0134, 7.3.2, without 01h Unknown and 02h Other.
constexpr TBoardKind boardKinds[] = {
    {0x03, "server blade"},
    {0x04, "connectivity switch"},
    {0x05, "system management module"},
    {0x06, "processor module"},
    {0x07, "I/O module"},
    {0x08, "memory module"},
    {0x09, "daughter board"},
    {0x0A, "motherboard"},
    {0x0B, "processor and memory module"},
    {0x0C, "processor and I/O module"},
    {0x0D, "interconnect board"},
};

std::string Describe(const TSmbiosBoard& board) {
    const TBoardKind* kind = board.kind ? FindRow(boardKinds, &TBoardKind::code, *board.kind) : nullptr;
    return std::string(boardWord) + (kind != nullptr ? ", " + std::string(kind->name) : "");
}

// Maps the feature flags of a board to CIM_PhysicalPackage.RemovalConditions.
std::uint16_t FindRemovalConditions(std::uint8_t features) {
    constexpr std::uint8_t isHotSwappable = 0x10;
    constexpr std::uint8_t isRemovableOrReplaceable = 0x0C;
    constexpr std::uint16_t notApplicable = 2;
    constexpr std::uint16_t whenOff = 3;
    constexpr std::uint16_t whenOnOrOff = 4;
    if ((features & isHotSwappable) != 0) {
        return whenOnOrOff;
    }
    return (features & isRemovableOrReplaceable) != 0 ? whenOff : notApplicable;
}

std::optional<std::string> MakeElementName(const TCard& card) {
    if (card.manufacturer && card.model) {
        return *card.manufacturer + " " + *card.model;
    }
    return card.model;
}

TCard MakeCard(const TFoundBoard& found) {
    const TSmbiosBoard& board = found.fields;
    constexpr std::uint8_t isHosting = 0x01;
    constexpr std::uint8_t needsDaughterBoard = 0x02;
    TCard card;
    card.place.structure = found.structure;
    card.description = Describe(board);
    card.manufacturer = WithoutPlaceholder(board.manufacturer);
    card.model = WithoutPlaceholder(board.product);
    card.version = WithoutPlaceholder(board.version);
    card.serialNumber = WithoutPlaceholder(board.serial);
    card.userTracking = WithoutPlaceholder(board.assetTag);
    card.elementName = MakeElementName(card);
    if (board.features) {
        card.removalConditions = FindRemovalConditions(*board.features);
        card.hostingBoard = (*board.features & isHosting) != 0;
        card.requiresDaughterBoard = (*board.features & needsDaughterBoard) != 0;
    }
    return card;
}

// A board has no unique name. Its key is "Baseboard", plus its location if several boards share it;
// /sys/class/dmi/id has no location, so a single board gets the same key with and without root.
std::vector<TKeySource> MakeKeySources(const std::vector<TFoundBoard>& boards) {
    std::vector<TNamedPlace> places;
    places.reserve(boards.size());
    for (const TFoundBoard& board : boards) {
        places.push_back({std::string(boardWord), WithoutPlaceholder(board.fields.location)});
    }
    return MakePlaceKeySources(places, "board");
}

std::vector<TFoundBoard> ReadTable(TCollection& collection) {
    constexpr std::uint8_t boardType = 2;
    std::vector<TFoundBoard> boards;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() == boardType) {
            boards.push_back({ParseSmbiosBoard(structure), &structure});
        }
    }
    return boards;
}

// Reads the texts of the first board, which the kernel shows to every user. On a machine without a board the
// files are empty or missing.
std::vector<TFoundBoard> ReadDmiClass(const ISystemFiles& files) {
    const auto folder = FindDmiFolder(files);
    if (!folder) {
        return {};
    }
    const auto read = [&](std::string_view name) {
        return ReadAttribute(files, *folder + "/board_" + std::string(name));
    };
    TSmbiosBoard board;
    board.manufacturer = read("vendor");
    board.product = read("name");
    board.version = read("version");
    board.assetTag = read("asset_tag");
    if (!board.manufacturer && !board.product) {
        return {};
    }
    board.serial = read("serial");
    return {{std::move(board)}};
}

void CollectCards(TCollection& collection) {
    auto boards = ReadTable(collection);
    if (boards.empty() && GetSmbios(collection).GetStructures().empty()) {
        boards = ReadDmiClass(collection.GetFiles());
    }
    auto keySources = MakeKeySources(boards);
    std::vector<TKeyedRecord<TCard>> cards;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        cards.push_back({MakeCard(boards[i]), std::move(keySources[i])});
    }
    CommitKeyed(collection, cardClass, std::move(cards), &TCard::tag, "board");
}

}  // namespace

extern constinit const TCollector cardCollector{
    .name = "board",
    .description = "Boards",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectCards,
};

}  // namespace NVORHOST
