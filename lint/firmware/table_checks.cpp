// Checks on the firmware's structure table by itself.
#include "lint/firmware/machine_checks.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_memory.h"
#include "machine/parse/smbios_system.h"
#include "text/trim.h"
#include "text/utf8.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace NLINT {
namespace {

using NVORHOST::TByteView;
using NVORHOST::TSmbiosStructure;

constexpr std::uint8_t systemType = 1;
constexpr std::uint8_t arrayType = 16;
constexpr std::uint8_t deviceType = 17;
constexpr char shortAnchor[] = "_SM_";
constexpr char longAnchor[] = "_SM3_";

std::string Count(std::uint64_t number, const std::string& word) {
    return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

std::string CountBytes(std::uint64_t number) {
    return Count(number, "byte");
}

// A field with a number, 1-based, of a text of its structure.
struct TTextField {
    std::uint8_t type;
    std::uint8_t offset;
};

// DSP0134, chapter 7.
constexpr TTextField textFields[] = {
    {0, 0x04},  {0, 0x05},  {0, 0x08},  {1, 0x04},  {1, 0x05},  {1, 0x06},  {1, 0x07},  {1, 0x19},
    {1, 0x1A},  {2, 0x04},  {2, 0x05},  {2, 0x06},  {2, 0x07},  {2, 0x08},  {2, 0x0A},  {3, 0x04},
    {3, 0x06},  {3, 0x07},  {3, 0x08},  {4, 0x04},  {4, 0x07},  {4, 0x10},  {4, 0x20},  {4, 0x21},
    {4, 0x22},  {4, 0x32},  {7, 0x04},  {8, 0x04},  {8, 0x06},  {9, 0x04},  {17, 0x10}, {17, 0x11},
    {17, 0x17}, {17, 0x18}, {17, 0x19}, {17, 0x1A}, {17, 0x2B}, {22, 0x04}, {22, 0x05}, {22, 0x06},
    {22, 0x07}, {22, 0x08}, {22, 0x0E}, {22, 0x14}, {39, 0x05}, {39, 0x06}, {39, 0x07}, {39, 0x08},
    {39, 0x09}, {39, 0x0A}, {39, 0x0B},
};

// A field with the handle of another structure, and the types that it may have; 0 ends the types.
struct THandleField {
    std::uint8_t type;
    std::uint8_t offset;
    std::uint8_t targets[2];
};

constexpr THandleField handleFields[] = {
    {2, 0x0B, {3, 0}},   {4, 0x1A, {7, 0}},    {4, 0x1C, {7, 0}},   {4, 0x1E, {7, 0}},   {16, 0x0B, {18, 33}},
    {17, 0x04, {16, 0}}, {17, 0x06, {18, 33}}, {19, 0x0C, {16, 0}}, {20, 0x0C, {17, 0}}, {20, 0x0E, {19, 0}},
};

constexpr TTextField serialFields[] = {{1, 0x07},  {2, 0x07},  {3, 0x07}, {4, 0x20},
                                       {17, 0x18}, {22, 0x07}, {39, 0x08}};

// Calls `visit` with every structure and each of its fields of the table.
template <typename TFields, typename TVisit>
void ForEachField(const TMachineEvidence& machine, const TFields& fields, const TVisit& visit) {
    for (const TSmbiosStructure& structure : machine.GetStructures()) {
        for (const auto& field : fields) {
            if (field.type == structure.GetType()) {
                visit(structure, field);
            }
        }
    }
}

// The parts of empty sockets and slots have no serial number.
bool IsPopulated(const TSmbiosStructure& structure) {
    constexpr std::uint8_t processorType = 4;
    constexpr std::uint8_t populatedBit = 0x40;
    if (structure.GetType() == deviceType) {
        return NVORHOST::ParseSmbiosMemoryDevice(structure).isPopulated;
    }
    return structure.GetType() != processorType ||
           (structure.GetFields().GetByte(0x18).value_or(0) & populatedBit) != 0;
}

std::optional<std::string> FindSerial(const TSmbiosStructure& structure, const TTextField& field) {
    const auto text = IsPopulated(structure) ? structure.GetText(field.offset) : std::nullopt;
    const std::string_view trimmed =
        NVORHOST::TrimBlanks(text ? std::string_view(*text) : std::string_view());
    return trimmed.empty() ? std::nullopt : std::optional(std::string(trimmed));
}

}  // namespace

void CheckTableForm(const TMachineEvidence& machine, const TReport& report) {
    if (const auto flaw = NVORHOST::FindSmbiosTableFlaw(machine.GetTable())) {
        report.Add("SMBIOS table", {*flaw, smbiosTablePath},
                   {"no malformed place", "DSP0134, 6.1 and chapter 7"});
    }
}

// The entry point of version 2 has the length, that of version 3 the largest length.
void CheckTableLength(const TMachineEvidence& machine, const TReport& report) {
    const TByteView entry(machine.GetEntryPoint());
    const std::uint64_t size = machine.GetTable().size();
    const auto add = [&](std::uint64_t announced, const char* offset) {
        report.Add("SMBIOS table", {CountBytes(size), smbiosTablePath},
                   {CountBytes(announced), std::string(smbiosEntryPath) + ", " + offset});
    };
    if (machine.GetEntryPoint().starts_with(longAnchor)) {
        const auto largest = entry.GetDword(0x0C);
        if (largest && size > *largest) {
            add(*largest, "0Ch");
        }
    } else if (machine.GetEntryPoint().starts_with(shortAnchor)) {
        const auto length = entry.GetWord(0x16);
        if (length && size != *length) {
            add(*length, "16h");
        }
    }
}

void CheckStructureCount(const TMachineEvidence& machine, const TReport& report) {
    const auto announced = TByteView(machine.GetEntryPoint()).GetWord(0x1C);
    const std::string& table = machine.GetTable();
    if (!machine.GetEntryPoint().starts_with(shortAnchor) || !announced || table.empty() ||
        NVORHOST::FindSmbiosTableFlaw(table)) {
        return;
    }
    const std::size_t last = NVORHOST::FindSmbiosTableEnd(table) < table.size() ? 1 : 0;
    const std::size_t count = machine.GetStructures().size() + last;
    if (count != *announced) {
        report.Add("SMBIOS table", {Count(count, "structure"), smbiosTablePath},
                   {Count(*announced, "structure"), std::string(smbiosEntryPath) + ", 1Ch"});
    }
}

// The first versions did not have type 127.
void CheckTableEnd(const TMachineEvidence& machine, const TReport& report) {
    constexpr NVORHOST::TSmbiosVersion firstWithEnd{2, 2};
    const std::string& table = machine.GetTable();
    const auto version = NVORHOST::ParseSmbiosEntryPoint(machine.GetEntryPoint());
    if (table.empty() || machine.GetStructures().empty() || NVORHOST::FindSmbiosTableFlaw(table) ||
        (version && *version < firstWithEnd) || NVORHOST::FindSmbiosTableEnd(table) < table.size()) {
        return;
    }
    report.Add("SMBIOS table", {NameStructure(machine.GetStructures().back()), "last structure"},
               {"SMBIOS type 127", "DSP0134, 7.45"});
}

void CheckTextNumbers(const TMachineEvidence& machine, const TReport& report) {
    ForEachField(machine, textFields, [&](const TSmbiosStructure& structure, const TTextField& field) {
        const auto number = structure.GetFields().GetByte(field.offset);
        if (number && *number > structure.GetTexts().size()) {
            report.Add(NameStructure(structure),
                       {"text " + std::to_string(*number), NameField(structure, field.offset)},
                       {Count(structure.GetTexts().size(), "text"), "texts of the structure"});
        }
    });
}

void CheckHandles(const TMachineEvidence& machine, const TReport& report) {
    std::map<std::uint16_t, const TSmbiosStructure*> seen;
    for (const TSmbiosStructure& structure : machine.GetStructures()) {
        const auto [first, isNew] = seen.emplace(structure.GetHandle(), &structure);
        if (!isNew) {
            report.Add(
                "handle " + FormatHandle(structure.GetHandle()),
                {"SMBIOS type " + std::to_string(structure.GetType()), NameField(structure, 2)},
                {"SMBIOS type " + std::to_string(first->second->GetType()), NameField(*first->second, 2)});
        }
    }
}

// FFFFh and FFFEh mean that there is none. A structure of type 126 is inactive, and may have been of any
// type.
void CheckReferences(const TMachineEvidence& machine, const TReport& report) {
    constexpr std::uint16_t firstNone = 0xFFFE;
    constexpr std::uint8_t inactiveType = 126;
    ForEachField(machine, handleFields, [&](const TSmbiosStructure& structure, const THandleField& field) {
        const auto handle = structure.GetFields().GetWord(field.offset);
        if (!handle || *handle >= firstNone) {
            return;
        }
        const bool isFound = std::ranges::any_of(machine.GetStructures(), [&](const TSmbiosStructure& each) {
            return each.GetHandle() == *handle &&
                   (each.GetType() == field.targets[0] || each.GetType() == field.targets[1] ||
                    each.GetType() == inactiveType);
        });
        if (isFound) {
            return;
        }
        const TSmbiosStructure* const other = machine.FindHandle(*handle);
        report.Add(
            NameStructure(structure), {FormatHandle(*handle), NameField(structure, field.offset)},
            {other == nullptr ? "no structure has the handle" : NameStructure(*other), smbiosTablePath});
    });
}

void CheckEncoding(const TMachineEvidence& machine, const TReport& report) {
    for (const TSmbiosStructure& structure : machine.GetStructures()) {
        for (std::size_t i = 0; i < structure.GetTexts().size(); ++i) {
            if (const auto replaced = NVORHOST::ReplaceMalformedUtf8(structure.GetTexts()[i])) {
                report.Add(NameStructure(structure),
                           {*replaced, NameStructure(structure) + ", text " + std::to_string(i + 1)},
                           {"text in UTF-8", "DSP0134, 6.1.3"});
            }
        }
    }
}

void CheckPlaceholders(const TMachineEvidence& machine, const TReport& report) {
    ForEachField(machine, serialFields, [&](const TSmbiosStructure& structure, const TTextField& field) {
        const auto serial = FindSerial(structure, field);
        if (serial && NVORHOST::IsPlaceholder(*serial)) {
            report.Add(NameStructure(structure), {*serial, NameField(structure, field.offset)},
                       {"known filler", "list of placeholders of this program"});
        }
    });
}

void CheckPlaceholderUuid(const TMachineEvidence& machine, const TReport& report) {
    constexpr NVORHOST::TSmbiosVersion firstMixed{2, 6};
    constexpr std::size_t uuidOffset = 0x08;
    constexpr std::size_t uuidBytes = 16;
    const auto version = NVORHOST::ParseSmbiosEntryPoint(machine.GetEntryPoint());
    for (const TSmbiosStructure* const system : machine.FindAll(systemType)) {
        const auto bytes = system->GetFields().GetRange(uuidOffset, uuidBytes);
        if (bytes && !NVORHOST::FormatSmbiosUuid(*bytes, version.value_or(firstMixed))) {
            report.Add(NameStructure(*system), {"placeholder", NameField(*system, uuidOffset)},
                       {"UUID of this machine alone", "DSP0134, 7.2.1"});
        }
    }
}

void CheckSharedSerials(const TMachineEvidence& machine, const TReport& report) {
    std::map<std::pair<std::uint8_t, std::string>, const TSmbiosStructure*> seen;
    ForEachField(machine, serialFields, [&](const TSmbiosStructure& structure, const TTextField& field) {
        const auto serial = FindSerial(structure, field);
        if (!serial || NVORHOST::IsPlaceholder(*serial)) {
            return;
        }
        const auto [first, isNew] = seen.emplace(std::pair(structure.GetType(), *serial), &structure);
        if (!isNew) {
            report.Add(NameStructure(structure), {*serial, NameField(structure, field.offset)},
                       {*serial, NameField(*first->second, field.offset)});
        }
    });
}

void CheckArraySlots(const TMachineEvidence& machine, const TReport& report) {
    for (const TSmbiosStructure* const array : machine.FindAll(arrayType)) {
        const auto slots = NVORHOST::ParseSmbiosMemoryArray(*array).slotCount;
        std::uint64_t devices = 0;
        for (const TSmbiosStructure* const device : machine.FindAll(deviceType)) {
            devices += NVORHOST::ParseSmbiosMemoryDevice(*device).arrayHandle == array->GetHandle() ? 1U : 0U;
        }
        if (slots && *slots != devices) {
            report.Add("memory array " + FormatHandle(array->GetHandle()),
                       {Count(*slots, "slot"), NameField(*array, 0x0D)},
                       {Count(devices, "memory device"), "SMBIOS type 17, 04h"});
        }
    }
}

void CheckArrayCapacity(const TMachineEvidence& machine, const TReport& report) {
    constexpr std::uint64_t bytesPerMebibyte = std::uint64_t{1} << 20;
    for (const TSmbiosStructure* const array : machine.FindAll(arrayType)) {
        const auto largest = NVORHOST::ParseSmbiosMemoryArray(*array).maxCapacityBytes;
        std::uint64_t sum = 0;
        for (const TSmbiosStructure* const structure : machine.FindAll(deviceType)) {
            const auto device = NVORHOST::ParseSmbiosMemoryDevice(*structure);
            sum += device.arrayHandle == array->GetHandle() ? device.capacityBytes.value_or(0) : 0;
        }
        if (largest && sum > *largest) {
            report.Add(
                "memory array " + FormatHandle(array->GetHandle()),
                {"at most " + std::to_string(*largest / bytesPerMebibyte) + " MiB", NameField(*array, 0x07)},
                {std::to_string(sum / bytesPerMebibyte) + " MiB", "SMBIOS type 17, sum of 0Ch"});
        }
    }
}

}  // namespace NLINT
