#include "machine/capture/property_redaction.h"

#include "machine/capture/replaced_lines.h"
#include "machine/capture/scsi_redaction.h"
#include "machine/parse/udev_record.h"
#include "text/lines.h"
#include "text/wildcard.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

// The meaning of the values of a key.
enum class EProperty {
    identity,       // one identity, of any form
    serial,         // a serial number, alone or after vendor and model
    worldWideName,  // a world-wide name with a prefix
    arrayName,      // the host that made the array, a colon, and a name
    lastWord,       // a serial number after vendor and model, joined by "_"
    names,          // names of devices and hosts
    words,          // words of the kernel and of vendors, which may equal a short identity by chance
    published,      // UUIDs that identify a kind of device
};

struct TPropertyRule {
    std::string_view key;  // "*" matches any part
    EProperty property;
    EIdentityKind kind = EIdentityKind::serialNumber;
};

// The first matching row counts. A key without a row has EProperty::names.
constexpr TPropertyRule propertyRules[] = {
    {"ID_SERIAL", EProperty::serial},
    {"ID_USB_SERIAL", EProperty::serial},
    {"ID_SERIAL_SHORT", EProperty::identity},
    {"ID_USB_SERIAL_SHORT", EProperty::identity},
    {"ID_SCSI_SERIAL", EProperty::identity},
    {"SCSI_IDENT_SERIAL", EProperty::identity},
    {"SCSI_IDENT_*_VENDOR", EProperty::identity},
    {"SCSI_IDENT_*_NAA_*", EProperty::identity, EIdentityKind::worldWideName},
    {"SCSI_IDENT_*_EUI64*", EProperty::identity, EIdentityKind::worldWideName},
    {"SCSI_IDENT_*_T10", EProperty::lastWord},
    {"DM_SERIAL", EProperty::identity},
    {"POWER_SUPPLY_SERIAL_NUMBER", EProperty::identity},
    {"ID_FS_UUID*", EProperty::identity, EIdentityKind::uuid},
    {"ID_PART_ENTRY_UUID", EProperty::identity, EIdentityKind::uuid},
    {"ID_PART_TABLE_UUID", EProperty::identity, EIdentityKind::uuid},
    {"PARTUUID", EProperty::identity, EIdentityKind::uuid},
    {"MD_UUID", EProperty::identity, EIdentityKind::uuid},
    {"ID_UUID", EProperty::identity, EIdentityKind::uuid},
    {"HID_UNIQ", EProperty::identity},
    {"ID_WWN_VENDOR_EXTENSION", EProperty::identity, EIdentityKind::worldWideName},
    {"ID_WWN*", EProperty::worldWideName},
    {"MD_NAME", EProperty::arrayName},
    {"MODALIAS", EProperty::published},
    {"ID_PART_ENTRY_TYPE", EProperty::published},
    {"ID_PART_ENTRY_NAME", EProperty::names},
    {"ID_PART_*", EProperty::words},
    {"ID_FS_LABEL*", EProperty::names},
    {"ID_FS_*", EProperty::words},
    {"ID_MODEL*", EProperty::words},
    {"ID_VENDOR*", EProperty::words},
    {"ID_USB_*", EProperty::words},
    {"ID_PCI_*", EProperty::words},
    {"ID_ATA*", EProperty::words},
    {"ID_CDROM*", EProperty::words},
    {"ID_INPUT*", EProperty::words},
    {"ID_SCSI*", EProperty::words},
    {"ID_TYPE", EProperty::words},
    {"ID_BUS", EProperty::words},
    {"ID_REVISION", EProperty::words},
    {"SCSI_*", EProperty::words},
    {"MD_LEVEL", EProperty::words},
    {"MD_DEVICES", EProperty::words},
    {"MD_METADATA", EProperty::words},
    {"POWER_SUPPLY_*", EProperty::words},
    {"PCI_*", EProperty::words},
    {"HID_*", EProperty::words},
    {"DEVTYPE", EProperty::words},
    {"DEVNAME", EProperty::words},
    {"DEVPATH", EProperty::words},
    {"SUBSYSTEM", EProperty::words},
    {"DRIVER", EProperty::words},
    {"TYPE", EProperty::words},
    {"PRODUCT", EProperty::words},
    {"INTERFACE", EProperty::words},
    {"TAGS", EProperty::words},
    {"CURRENT_TAGS", EProperty::words},
};
// clang-format on

const TPropertyRule& FindPropertyRule(std::string_view key) {
    static constexpr TPropertyRule names{"*", EProperty::names};
    const auto* const rule = std::ranges::find_if(
        propertyRules, [&](const TPropertyRule& row) { return MatchesWildcards(row.key, key); });
    return rule == std::end(propertyRules) ? names : *rule;
}

ETextContext ContextOf(EProperty property) {
    switch (property) {
        case EProperty::words:
            return ETextContext::anything;
        case EProperty::published:
            return ETextContext::published;
        default:
            return ETextContext::identities;
    }
}

// A line of a udev record, "E:KEY=value", or of a uevent attribute, "KEY=value".
struct TPropertyLine {
    std::string_view mark, key, value;  // the line is mark + key + "=" + value
};

std::optional<TPropertyLine> ParsePropertyLine(std::string_view line) {
    constexpr std::string_view mark = "E:";
    const std::size_t start = line.starts_with(mark) ? mark.size() : 0;
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || equals < start || (start == 0 && line.substr(1, 1) == ":")) {
        return std::nullopt;
    }
    return TPropertyLine{line.substr(0, start), line.substr(start, equals - start), line.substr(equals + 1)};
}

// Links of devices are names. Other lines without a property are numbers and words.
ETextContext ContextOfLine(std::string_view line) {
    if (const auto property = ParsePropertyLine(line)) {
        return ContextOf(FindPropertyRule(property->key).property);
    }
    return line.starts_with("S:") ? ETextContext::identities : ETextContext::anything;
}

// True if the value is a serial number alone. ID_SERIAL, and likewise ID_USB_SERIAL, is vendor, model and
// serial number, or some of them.
bool IsSerialAlone(std::string_view record, std::string_view key, std::string_view serial) {
    const std::string prefix(key.substr(0, key.size() - std::string_view("SERIAL").size()));
    const auto find = [&](std::string_view name) {
        return FindUdevProperty(record, prefix + std::string(name)).value_or("");
    };
    const std::string vendorAndModel = std::string(find("VENDOR")) + "_" + std::string(find("MODEL"));
    return find("SERIAL_SHORT").empty() && serial != vendorAndModel && serial != find("MODEL");
}

void LearnProperty(std::string_view record, const TPropertyLine& line, TIdentityTexts& identities) {
    const TPropertyRule& rule = FindPropertyRule(line.key);
    switch (rule.property) {
        case EProperty::identity:
            identities.Learn(line.value, rule.kind);
            return;
        case EProperty::serial:
            if (IsSerialAlone(record, line.key, line.value)) {
                identities.Learn(line.value, rule.kind);
            }
            return;
        case EProperty::worldWideName:
            LearnWorldWideId(line.value, identities);
            return;
        case EProperty::arrayName:
            if (line.value.find(':') != std::string_view::npos) {
                identities.LearnHostName(SplitAt(line.value, ':').first);
            }
            return;
        case EProperty::lastWord:
            identities.Learn(line.value.substr(line.value.find_last_of("_ ") + 1));
            return;
        default:
            return;
    }
}

std::string ReplaceProperty(std::string_view record, const TPropertyLine& line,
                            const TIdentityTexts& identities) {
    const EProperty property = FindPropertyRule(line.key).property;
    const bool isValue = property == EProperty::identity ||
                         (property == EProperty::serial && IsSerialAlone(record, line.key, line.value));
    return std::string(line.mark) + identities.Replace(line.key, ETextContext::anything) + "=" +
           (isValue ? identities.ReplaceValue(line.value)
                    : identities.Replace(line.value, ContextOf(property)));
}

}  // namespace

void LearnProperties(std::string_view bytes, TIdentityTexts& identities) {
    ForEachLine(bytes, [&](std::string_view line) {
        const auto property = ParsePropertyLine(line);
        if (property) {
            LearnProperty(bytes, *property, identities);
        }
        identities.LearnForms(property ? property->value : line, ContextOfLine(line));
    });
}

std::string ReplaceProperties(std::string_view bytes, const TIdentityTexts& identities) {
    return ReplaceLines(bytes, [&](std::string_view line) {
        const auto property = ParsePropertyLine(line);
        return property ? ReplaceProperty(bytes, *property, identities)
                        : identities.Replace(line, ContextOfLine(line));
    });
}

std::optional<EIdentityKind> FindInProperties(std::string_view bytes, const TIdentitySearch& search) {
    std::optional<EIdentityKind> found;
    ForEachLine(bytes, [&](std::string_view line) {
        const auto property = ParsePropertyLine(line);
        if (!found) {
            found = search.Find(property ? property->value : line, ContextOfLine(line));
        }
    });
    return found ? found : search.Find(bytes, ETextContext::published);
}

}  // namespace NVORHOST
