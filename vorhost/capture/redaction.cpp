#include "vorhost/capture/redaction.h"

#include "vorhost/capture/identity_texts.h"
#include "vorhost/capture/smbios_redaction.h"
#include "vorhost/capture/text_kinds.h"
#include "vorhost/parse/byte_view.h"
#include "vorhost/parse/ip_address.h"
#include "vorhost/parse/lines.h"
#include "vorhost/parse/numbers.h"
#include "vorhost/parse/placeholders.h"
#include "vorhost/parse/spd_eeprom.h"
#include "vorhost/parse/udev_record.h"
#include "vorhost/system/path_pattern.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace NVORHOST {

namespace {

struct TRedaction {
    TIdentityTexts identities;
    TSmbiosVersion smbiosVersion{2, 0};
};

// `text` with each line replaced by what `replace` makes of it.
template <typename TReplace>
std::string ReplaceLines(std::string_view text, TReplace&& replace) {
    std::string replaced;
    ForEachLine(text, [&](std::string_view line) {
        replaced += replace(line);
        replaced += '\n';
    });
    if (!text.ends_with('\n') && !replaced.empty()) {
        replaced.pop_back();
    }
    return replaced;
}

std::string_view LastWord(std::string_view text) {
    return text.substr(text.find_last_of(' ') + 1);
}

// ---- files of one value

void LearnValue(std::string_view bytes, TRedaction& redaction) {
    redaction.identities.Learn(bytes.substr(0, bytes.find('\0')));
}

std::string ReplaceValue(std::string_view bytes, const TRedaction& redaction) {
    return redaction.identities.ReplaceValue(bytes);
}

void LearnNothing(std::string_view, TRedaction&) {}

std::string ReplaceAnything(std::string_view bytes, const TRedaction& redaction) {
    return redaction.identities.Replace(bytes, ETextContext::anything);
}

std::string ReplaceIdentities(std::string_view bytes, const TRedaction& redaction) {
    return redaction.identities.Replace(bytes, ETextContext::identities);
}

std::string KeepAll(std::string_view bytes, const TRedaction&) {
    return std::string(bytes);
}

std::string ReplaceHostName(std::string_view bytes, const TRedaction& redaction) {
    return redaction.identities.ReplaceHostName(bytes);
}

void LearnHostName(std::string_view bytes, TRedaction& redaction) {
    redaction.identities.LearnHostName(bytes);
}

// Texts that begin so hold a world-wide name, which is found wherever it stands.
constexpr std::string_view worldWideMarks[] = {"naa.", "eui.", "uuid.", "0x"};

// "t10." is vendor, model and serial number. "nvme." holds a serial number and a model, each as hexadecimal
// digits. What has no such mark is one name.
void LearnWorldWideId(std::string_view bytes, TRedaction& redaction) {
    const std::string_view text = TrimBlanks(bytes);
    if (text.starts_with("t10.")) {
        redaction.identities.Learn(LastWord(text));
    } else if (text.starts_with("nvme.")) {
        const std::string_view digits = SplitAt(SplitAt(text, '-').second, '-').first;
        redaction.identities.Learn(IsHex(digits) ? FromHex(digits) : std::string(digits));
    } else if (std::ranges::none_of(worldWideMarks, [&](auto mark) { return text.starts_with(mark); })) {
        redaction.identities.Learn(text);
    }
}

// ---- the udev database and uevent attributes

// Values of these keys identify.
constexpr std::string_view identityKeys[] = {
    "ID_SERIAL_SHORT",
    "ID_SCSI_SERIAL",
    "SCSI_IDENT_SERIAL",
    "ID_USB_SERIAL_SHORT",
    "DM_SERIAL",
    "ID_FS_UUID",
    "ID_FS_UUID_ENC",
    "ID_FS_UUID_SUB",
    "ID_FS_UUID_SUB_ENC",
    "ID_PART_ENTRY_UUID",
    "ID_PART_TABLE_UUID",
    "PARTUUID",
    "MD_UUID",
    "ID_UUID",
    "HID_UNIQ",
};

// "E:KEY=value" of a record, "KEY=value" of an attribute.
std::pair<std::string_view, std::string_view> SplitProperty(std::string_view line) {
    if (line.starts_with("E:")) {
        line.remove_prefix(2);
    }
    return SplitAt(line, '=');
}

// The whole of ID_SERIAL is model and serial number, or one of them alone.
bool IsSerialAlone(std::string_view record, std::string_view serial) {
    const auto find = [&](std::string_view key) { return FindUdevProperty(record, key).value_or(""); };
    const std::string vendorAndModel = std::string(find("ID_VENDOR")) + "_" + std::string(find("ID_MODEL"));
    return find("ID_SERIAL_SHORT").empty() && serial != vendorAndModel && serial != find("ID_MODEL");
}

void LearnProperties(std::string_view bytes, TRedaction& redaction) {
    ForEachLine(bytes, [&](std::string_view line) {
        const auto [key, value] = SplitProperty(line);
        const bool identifies = std::ranges::find(identityKeys, key) != std::end(identityKeys);
        if (identifies || (key == "ID_SERIAL" && IsSerialAlone(bytes, value))) {
            redaction.identities.Learn(value);
        }
        if (key == "ID_WWN") {
            LearnWorldWideId(value, redaction);
        }
        if (key == "MD_NAME" && value.find(':') != std::string_view::npos) {
            redaction.identities.LearnHostName(SplitAt(value, ':').first);  // where the array was made
        }
    });
}

// Others may have a short serial number as their value by chance, DEVTYPE "disk" for one.
constexpr std::string_view otherKeysOfIdentities[] = {
    "ID_SERIAL",  "ID_WWN",  "ID_WWN_WITH_EXTENSION", "DEVLINKS", "DM_NAME", "DM_UUID", "MD_NAME",
    "MD_DEVNAME", "ID_PATH", "ID_PATH_TAG",
};

std::string ReplaceProperties(std::string_view bytes, const TRedaction& redaction) {
    return ReplaceLines(bytes, [&](std::string_view line) {
        const std::string_view key = SplitProperty(line).first;
        const auto isIn = [&](const auto& keys) { return std::ranges::find(keys, key) != std::end(keys); };
        const bool isLink = line.starts_with("S:");
        return isLink || isIn(identityKeys) || isIn(otherKeysOfIdentities)
                   ? ReplaceIdentities(line, redaction)
                   : ReplaceAnything(line, redaction);
    });
}

// ---- binary files

void LearnSmbiosTable(std::string_view bytes, TRedaction& redaction) {
    LearnSmbios(bytes, redaction.smbiosVersion, redaction.identities);
}

std::string ReplaceSmbiosTable(std::string_view bytes, const TRedaction& redaction) {
    return RedactSmbios(bytes, redaction.smbiosVersion, redaction.identities);
}

std::string Reversed(std::string_view bytes) {
    return {bytes.rbegin(), bytes.rend()};
}

// Firmware that writes the bytes of the serial number in the other order must find its module again.
std::string ReplaceSpdSerial(std::string_view bytes, const TRedaction& redaction) {
    std::string replaced(bytes);
    const auto offset = FindSpdSerial(bytes);
    if (!offset) {
        return replaced;
    }
    constexpr std::size_t serialBytes = 4;
    TPseudonyms& pseudonyms = redaction.identities.GetPseudonyms();
    const std::string serial(bytes.substr(*offset, serialBytes));
    std::string turned = ToHex(Reversed(serial));
    std::ranges::transform(turned, turned.begin(), ToUpper);
    replaced.replace(*offset, serialBytes,
                     redaction.identities.IsKnown(turned)
                         ? Reversed(pseudonyms.ReplaceBytes(Reversed(serial)))
                         : pseudonyms.ReplaceBytes(serial));
    return replaced;
}

constexpr std::size_t vpdHeaderSize = 4;

void LearnVpdSerial(std::string_view bytes, TRedaction& redaction) {
    redaction.identities.Learn(bytes.substr(std::min(vpdHeaderSize, bytes.size())));
}

std::string ReplaceVpdSerial(std::string_view bytes, const TRedaction& redaction) {
    const std::size_t header = std::min(vpdHeaderSize, bytes.size());
    return std::string(bytes.substr(0, header)) + redaction.identities.ReplaceValue(bytes.substr(header));
}

// A page of designators: each says how it is coded, what it is, and how long.
// Source: SPC-4, 7.8.6.
struct TDesignator {
    bool isBinary = false;
    std::uint8_t type = 0;
    std::size_t start = 0;
    std::string_view bytes;
};

std::vector<TDesignator> FindDesignators(std::string_view page) {
    std::vector<TDesignator> designators;
    const TByteView view(page);
    for (std::size_t start = vpdHeaderSize; view.GetDword(start);) {
        const std::size_t length = *view.GetByte(start + 3);
        const std::size_t place = start + vpdHeaderSize;
        if (const auto bytes = view.GetRange(place, length)) {
            designators.push_back({/*isBinary=*/(*view.GetByte(start) & 0x0F) == 1,
                                   static_cast<std::uint8_t>(*view.GetByte(start + 1) & 0x0F), place,
                                   *bytes});
        }
        start = place + length;
    }
    return designators;
}

void LearnVpdDesignators(std::string_view page, TRedaction& redaction) {
    constexpr std::uint8_t vendorSpecific = 0;
    constexpr std::uint8_t vendorAndSerial = 1;  // T10 vendor identification
    for (const TDesignator& designator : FindDesignators(page)) {
        if (!designator.isBinary && designator.type == vendorSpecific) {
            redaction.identities.Learn(designator.bytes);
        }
        if (!designator.isBinary && designator.type == vendorAndSerial) {
            redaction.identities.Learn(LastWord(TrimBlanks(designator.bytes)));
        }
    }
}

// World-wide names stand in it as bytes, what else identifies as text.
std::string ReplaceVpdDesignators(std::string_view page, const TRedaction& redaction) {
    constexpr std::size_t leastName = 8;
    std::string replaced = redaction.identities.Replace(page, ETextContext::identities);
    for (const TDesignator& designator : FindDesignators(page)) {
        if (designator.isBinary && designator.bytes.size() >= leastName) {
            replaced.replace(designator.start, designator.bytes.size(),
                             redaction.identities.GetPseudonyms().ReplaceBytes(designator.bytes));
        }
    }
    return replaced;
}

// Users, and where they came from.
// Source: utmp(5), the layout of x86-64.
std::string ReplaceSessions(std::string_view bytes, const TRedaction& redaction) {
    struct TField {
        std::size_t offset, size;
    };
    constexpr std::size_t recordSize = 384;
    constexpr TField texts[] = {{44, 32}, {76, 256}};
    constexpr TField address{348, 16};
    std::string replaced(bytes);
    for (std::size_t start = 0; start + recordSize <= bytes.size(); start += recordSize) {
        for (const TField& field : texts) {
            replaced.replace(
                start + field.offset, field.size,
                redaction.identities.ReplaceValue(bytes.substr(start + field.offset, field.size)));
        }
        replaced.replace(start + address.offset, address.size,
                         redaction.identities.GetPseudonyms().ReplaceBytes(
                             bytes.substr(start + address.offset, address.size)));
    }
    return replaced;
}

// ---- /proc/net

// The words of a line, each with the blanks behind it.
template <typename TReplace>
std::string ReplaceWords(std::string_view line, TReplace&& replace) {
    constexpr std::string_view blanks = " \t";
    std::string replaced;
    for (std::size_t index = 0; !line.empty(); ++index) {
        const std::size_t length = std::min(line.find_first_of(blanks), line.size());
        const std::size_t end = std::min(line.find_first_not_of(blanks, length), line.size());
        if (length != 0) {
            replaced += replace(index, line.substr(0, length));
        } else {
            --index;  // blanks at the start are no word
        }
        replaced += line.substr(length, end - length);
        line.remove_prefix(end);
    }
    return replaced;
}

// Networks stand among the addresses, "10.0.0.0/8".
std::string ReplaceTrie(std::string_view bytes, const TRedaction& redaction) {
    return ReplaceLines(bytes, [&](std::string_view line) {
        return ReplaceWords(line, [&](std::size_t, std::string_view word) {
            const auto [address, length] = SplitAt(word, '/');
            const auto parsed = ParseIpv4Address(address);
            return parsed ? *FormatIpAddress(redaction.identities.GetPseudonyms().ReplaceAddress(*parsed)) +
                                std::string(word.substr(address.size()))
                          : std::string(word);
        });
    });
}

std::string ReplaceRoutes(std::string_view bytes, const TRedaction& redaction) {
    constexpr std::size_t interfaceColumn = 0;
    constexpr std::size_t destinationColumn = 1;
    constexpr std::size_t gatewayColumn = 2;
    return ReplaceLines(bytes, [&](std::string_view line) {
        return ReplaceWords(line, [&](std::size_t column, std::string_view word) {
            if (column == interfaceColumn) {
                return ReplaceAnything(word, redaction);
            }
            if ((column != destinationColumn && column != gatewayColumn) || word.size() != 2 * ipv4Bytes ||
                !IsHex(word)) {
                return std::string(word);
            }
            const auto address = Reversed(FromHex(word));  // a little-endian word
            std::string text = ToHex(Reversed(redaction.identities.GetPseudonyms().ReplaceAddress(address)));
            std::ranges::transform(text, text.begin(), ToUpper);
            return text;
        });
    });
}

std::string ReplaceIpv6Interfaces(std::string_view bytes, const TRedaction& redaction) {
    return ReplaceLines(bytes, [&](std::string_view line) {
        return ReplaceWords(line, [&](std::size_t column, std::string_view word) {
            if (column == 0 && word.size() == 2 * ipv6Bytes && IsHex(word)) {
                return ToHex(redaction.identities.GetPseudonyms().ReplaceAddress(FromHex(word)));
            }
            return ReplaceAnything(word, redaction);
        });
    });
}

// ---- which file is what

struct TFileRule {
    std::string_view pattern;
    void (*learn)(std::string_view bytes, TRedaction& redaction);
    std::string (*replace)(std::string_view bytes, const TRedaction& redaction);
};

// The first row that matches counts.
// clang-format off
constexpr TFileRule fileRules[] = {
    {"/sys/firmware/dmi/tables/DMI",     LearnSmbiosTable, ReplaceSmbiosTable},
    {"/sys/firmware/dmi/entries/*/raw",  LearnSmbiosTable, ReplaceSmbiosTable},
    {"/sys/firmware/dmi/tables/*",       LearnNothing,     KeepAll},
    {"/etc/os-release",                  LearnNothing,     KeepAll},
    {"/usr/lib/os-release",              LearnNothing,     KeepAll},
    {"/proc/cpuinfo",                    LearnNothing,     KeepAll},
    {"/proc/sys/kernel/hostname",        LearnHostName,    ReplaceHostName},
    {"/etc/hostname",                    LearnHostName,    ReplaceHostName},
    {"/proc/**/net/fib_trie",            LearnNothing,     ReplaceTrie},
    {"/proc/**/net/route",               LearnNothing,     ReplaceRoutes},
    {"/proc/**/net/if_inet6",            LearnNothing,     ReplaceIpv6Interfaces},
    {"/run/udev/data/*",                 LearnProperties,  ReplaceProperties},
    {"/run/utmp",                        LearnNothing,     ReplaceSessions},
    {"/sys/**/uevent",                   LearnProperties,  ReplaceProperties},
    {"/sys/**/class_id",                 LearnNothing,     KeepAll},  // UUIDs of kinds of devices
    {"/sys/**/dm/name",                  LearnNothing,     ReplaceIdentities},
    {"/sys/**/dm/uuid",                  LearnNothing,     ReplaceIdentities},
    {"/sys/**/eeprom",                   LearnNothing,     ReplaceSpdSerial},
    {"/sys/**/vpd_pg80",                 LearnVpdSerial,   ReplaceVpdSerial},
    {"/sys/**/vpd_pg83",                 LearnVpdDesignators, ReplaceVpdDesignators},
    {"/sys/**/wwid",                     LearnWorldWideId, ReplaceIdentities},
    // Files that hold one value that identifies.
    {"/sys/**/serial",                   LearnValue,       ReplaceValue},
    {"/sys/**/serial_number",            LearnValue,       ReplaceValue},
    {"/sys/**/*_serial",                 LearnValue,       ReplaceValue},
    {"/sys/**/*_asset_tag",              LearnValue,       ReplaceValue},
    {"/sys/**/*uuid",                    LearnValue,       ReplaceValue},
    {"/sys/**/unique_id",                LearnValue,       ReplaceValue},
    {"/sys/**/nguid",                    LearnValue,       ReplaceValue},
    {"/sys/**/eui",                      LearnValue,       ReplaceValue},
    {"/sys/**/cid",                      LearnValue,       ReplaceValue},
    {"/sys/**/ppin",                     LearnValue,       ReplaceValue},
    {"/sys/**/subsysnqn",                LearnValue,       ReplaceValue},
    {"/proc/device-tree/serial-number",  LearnValue,       ReplaceValue},
    {"/sys/firmware/devicetree/base/serial-number", LearnValue, ReplaceValue},
    {"/**",                              LearnNothing,     ReplaceAnything},
};
// clang-format on

const TFileRule& FindRule(std::string_view path) {
    return *std::ranges::find_if(
        fileRules, [&](const TFileRule& rule) { return MatchesPathPattern(rule.pattern, path); });
}

// ---- names

// Names of links in /dev and of what hangs on them are made of identities.
ETextContext ContextOf(std::string_view path) {
    return path.starts_with("/dev/") ? ETextContext::identities : ETextContext::anything;
}

std::string ReplacePath(std::string_view path, const TRedaction& redaction) {
    return redaction.identities.Replace(path, ContextOf(path));
}

// What an attribute is called says the kernel, even where a device has the same word for its serial number.
std::string ReplaceFilePath(std::string_view path, const TRedaction& redaction) {
    const std::size_t name = path.starts_with("/sys/") ? path.rfind('/') : path.size();
    return ReplacePath(path.substr(0, name), redaction) + std::string(path.substr(name));
}

// ---- the whole

TRedaction LearnAll(TPseudonyms::TKey key, const TCapturedTree& tree, const TCapturedAnswers& answers) {
    TRedaction redaction{TIdentityTexts(key)};
    if (const auto* node = tree.Find("/sys/firmware/dmi/tables/smbios_entry_point")) {
        redaction.smbiosVersion = ParseSmbiosEntryPoint(node->bytes).value_or(redaction.smbiosVersion);
    }
    for (const auto& [path, node] : tree.GetNodes()) {
        if (node.kind == TCapturedTree::EKind::file) {
            FindRule(path).learn(node.bytes, redaction);
        }
    }
    redaction.identities.LearnHostName(answers.nodeName.value_or(""));
    return redaction;
}

std::string ReplaceContents(const std::string& path, const TCapturedTree::TNode& node,
                            const TRedaction& redaction) {
    switch (node.kind) {
        case TCapturedTree::EKind::file:
            return FindRule(path).replace(node.bytes, redaction);
        case TCapturedTree::EKind::link:
            return redaction.identities.Replace(node.bytes, ContextOf(path));
        default:
            return node.bytes;
    }
}

void RedactAnswers(const TRedaction& redaction, TCapturedAnswers& answers) {
    if (answers.nodeName) {
        answers.nodeName = redaction.identities.ReplaceHostName(*answers.nodeName);
    }
    if (answers.interfaceAddresses) {
        for (TInterfaceAddress& row : *answers.interfaceAddresses) {
            row.interface = redaction.identities.Replace(row.interface, ETextContext::anything);
            row.address = redaction.identities.GetPseudonyms().ReplaceAddress(row.address);
        }
    }
    std::map<TAccessOfPath, EReadStatus> refusals;
    for (const auto& [access, status] : answers.refusals) {
        const auto replace = access.access == EAccess::read ? ReplaceFilePath : ReplacePath;
        refusals.emplace(TAccessOfPath{access.access, replace(access.path, redaction)}, status);
    }
    answers.refusals = std::move(refusals);
}

}  // namespace

void Redact(TPseudonyms::TKey key, TCapturedTree& tree, TCapturedAnswers& answers) {
    const TRedaction redaction = LearnAll(key, tree, answers);
    TCapturedTree redacted;
    for (const auto& [path, node] : tree.GetNodes()) {
        const auto replace = node.kind == TCapturedTree::EKind::file ? ReplaceFilePath : ReplacePath;
        redacted.AddNode(replace(path, redaction), {node.kind, ReplaceContents(path, node, redaction)});
    }
    tree = std::move(redacted);
    RedactAnswers(redaction, answers);
}

}  // namespace NVORHOST
