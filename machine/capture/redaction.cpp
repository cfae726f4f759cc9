#include "machine/capture/redaction.h"

#include "machine/capture/edid_redaction.h"
#include "machine/capture/mount_redaction.h"
#include "machine/capture/property_redaction.h"
#include "machine/capture/replaced_lines.h"
#include "machine/capture/scsi_redaction.h"
#include "machine/capture/smbios_redaction.h"
#include "machine/parse/ip_address.h"
#include "machine/parse/proc_net.h"
#include "machine/parse/spd_eeprom.h"
#include "machine/parse/utmp.h"
#include "machine/system/path_pattern.h"
#include "redaction/identities/identity_search.h"
#include "redaction/identities/identity_texts.h"
#include "redaction/identities/mount_point.h"
#include "text/hex.h"
#include "text/lines.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

template <EIdentityKind kind>
void LearnValue(std::string_view bytes, TRedactedMachine& redaction) {
    redaction.identities.Learn(bytes.substr(0, bytes.find('\0')), kind);
}

std::string ReplaceValue(std::string_view bytes, const TRedactedMachine& redaction) {
    return redaction.identities.ReplaceValue(bytes);
}

void LearnNothing(std::string_view, TRedactedMachine&) {}

void LearnForms(std::string_view bytes, TRedactedMachine& redaction) {
    redaction.identities.LearnForms(bytes, ETextContext::anything);
}

std::string ReplaceAnything(std::string_view bytes, const TRedactedMachine& redaction) {
    return redaction.identities.Replace(bytes, ETextContext::anything);
}

std::string ReplaceIdentities(std::string_view bytes, const TRedactedMachine& redaction) {
    return redaction.identities.Replace(bytes, ETextContext::identities);
}

std::string KeepAll(std::string_view bytes, const TRedactedMachine&) {
    return std::string(bytes);
}

std::string ReplaceHostName(std::string_view bytes, const TRedactedMachine& redaction) {
    return redaction.identities.ReplaceHostName(bytes);
}

void LearnHostName(std::string_view bytes, TRedactedMachine& redaction) {
    redaction.identities.LearnHostName(bytes);
}

void LearnSmbiosTable(std::string_view bytes, TRedactedMachine& redaction) {
    LearnSmbios(bytes, redaction.smbiosVersion, redaction.identities);
}

std::string ReplaceSmbiosTable(std::string_view bytes, const TRedactedMachine& redaction) {
    return RedactSmbios(bytes, redaction.smbiosVersion, redaction.identities);
}

std::string Reversed(std::string_view bytes) {
    return {bytes.rbegin(), bytes.rend()};
}

constexpr std::size_t spdSerialBytes = 4;

void LearnSpdSerial(std::string_view bytes, TRedactedMachine& redaction) {
    if (const auto offset = FindSpdSerial(bytes)) {
        redaction.identities.Learn(ToHex(bytes.substr(*offset, spdSerialBytes)));
    }
}

// Some firmware has the bytes of the serial number in reverse order. If the reversed form is known, the
// pseudonym is reversed as well, so that the module and its firmware record still match.
std::string ReplaceSpdSerial(std::string_view bytes, const TRedactedMachine& redaction) {
    std::string replaced(bytes);
    const auto offset = FindSpdSerial(bytes);
    if (!offset) {
        return replaced;
    }
    TPseudonyms& pseudonyms = redaction.identities.GetPseudonyms();
    const std::string serial(bytes.substr(*offset, spdSerialBytes));
    const std::string turned = ToHex(Reversed(serial));
    replaced.replace(*offset, spdSerialBytes,
                     redaction.identities.IsKnown(turned)
                         ? Reversed(pseudonyms.ReplaceBytes(Reversed(serial)))
                         : pseudonyms.ReplaceBytes(serial));
    return replaced;
}

std::string_view TextOf(std::string_view record, const TUtmpField& field) {
    const std::string_view text = record.substr(field.offset, field.size);
    return text.substr(0, text.find('\0'));
}

// Returns the address of a session; an IPv4 address is followed by zeros.
std::string_view AddressOf(std::string_view record) {
    const std::string_view bytes = record.substr(utmpAddress.offset, utmpAddress.size);
    const bool isIpv4 = std::ranges::all_of(bytes.substr(ipv4Bytes), [](char c) { return c == '\0'; });
    return bytes.substr(0, isIpv4 ? ipv4Bytes : ipv6Bytes);
}

void LearnSessions(std::string_view bytes, TRedactedMachine& redaction) {
    for (std::size_t start = 0; start + utmpRecordBytes <= bytes.size(); start += utmpRecordBytes) {
        const std::string_view record = bytes.substr(start, utmpRecordBytes);
        if (!IsUserSession(record)) {
            continue;
        }
        redaction.identities.Learn(TextOf(record, utmpUser), EIdentityKind::userName);
        const std::string_view origin = TextOf(record, utmpHost);
        const bool isAddress = ParseIpv4Address(origin) || ParseIpv6Address(origin);
        if (isAddress) {
            redaction.identities.Learn(origin, EIdentityKind::ipAddress);
        } else if (!origin.starts_with(':')) {  // a colon starts the display of a graphical session
            redaction.identities.LearnHostName(origin);
        }
        redaction.identities.Learn(*FormatIpAddress(AddressOf(record)), EIdentityKind::ipAddress);
    }
}

std::string ReplaceSessionText(std::string_view record, const TUtmpField& field,
                               const TRedactedMachine& redaction) {
    const std::string_view text = record.substr(field.offset, field.size);
    const std::string known = redaction.identities.Replace(text, ETextContext::identities);
    return known != text ? known : redaction.identities.ReplaceHostName(text);
}

std::string ReplaceSessions(std::string_view bytes, const TRedactedMachine& redaction) {
    std::string replaced(bytes);
    for (std::size_t start = 0; start + utmpRecordBytes <= bytes.size(); start += utmpRecordBytes) {
        const std::string_view record = bytes.substr(start, utmpRecordBytes);
        for (const TUtmpField& field : {utmpUser, utmpHost}) {
            replaced.replace(start + field.offset, field.size, ReplaceSessionText(record, field, redaction));
        }
        const std::string_view address = AddressOf(record);
        replaced.replace(start + utmpAddress.offset, address.size(),
                         redaction.identities.GetPseudonyms().ReplaceAddress(address));
    }
    return replaced;
}

// Calls `replace` with each word of a line and its index; keeps the blanks.
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
            --index;  // leading blanks are not a word
        }
        replaced += line.substr(length, end - length);
        line.remove_prefix(end);
    }
    return replaced;
}

// Replaces addresses, including those of networks such as "10.0.0.0/8".
std::string ReplaceTrie(std::string_view bytes, const TRedactedMachine& redaction) {
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

std::string ReplaceRoutes(std::string_view bytes, const TRedactedMachine& redaction) {
    constexpr std::size_t interfaceColumn = 0;
    constexpr std::size_t destinationColumn = 1;
    constexpr std::size_t gatewayColumn = 2;
    return ReplaceLines(bytes, [&](std::string_view line) {
        return ReplaceWords(line, [&](std::size_t column, std::string_view word) {
            if (column == interfaceColumn) {
                return ReplaceAnything(word, redaction);
            }
            const bool isAddress = column == destinationColumn || column == gatewayColumn;
            const auto stored = isAddress && word.size() == 2 * ipv4Bytes ? ParseHex(word) : std::nullopt;
            if (!stored) {
                return std::string(word);
            }
            const auto address = Reversed(*stored);  // a little-endian word
            return ToHex(Reversed(redaction.identities.GetPseudonyms().ReplaceAddress(address)),
                         EHexCase::upper);
        });
    });
}

std::string ReplaceIpv6Interfaces(std::string_view bytes, const TRedactedMachine& redaction) {
    return ReplaceLines(bytes, [&](std::string_view line) {
        return ReplaceWords(line, [&](std::size_t column, std::string_view word) {
            const auto address = column == 0 && word.size() == 2 * ipv6Bytes ? ParseHex(word) : std::nullopt;
            return address ? ToHex(redaction.identities.GetPseudonyms().ReplaceAddress(*address))
                           : ReplaceAnything(word, redaction);
        });
    });
}

void LearnTrie(std::string_view bytes, TRedactedMachine& redaction) {
    for (const std::string& address : ParseLocalIpv4Addresses(bytes)) {
        redaction.identities.Learn(*FormatIpAddress(address), EIdentityKind::ipAddress);
    }
}

void LearnIpv6Interfaces(std::string_view bytes, TRedactedMachine& redaction) {
    for (const TIpv6Interface& row : ParseIpv6Interfaces(bytes)) {
        redaction.identities.Learn(*FormatIpAddress(row.address), EIdentityKind::ipAddress);
    }
}

// Replaces user and host of a kernel that was built on the machine itself: "Linux version 6.1.0 (user@host)
// ...".
std::string ReplaceBuilder(std::string_view bytes, const TRedactedMachine& redaction) {
    const auto start = bytes.find('(');
    const auto at = bytes.find('@', std::min(start, bytes.size()));
    const auto end = bytes.find(')', std::min(at, bytes.size()));
    if (end == std::string_view::npos) {
        return std::string(bytes);
    }
    const std::string_view host = bytes.substr(at + 1, end - at - 1);
    if (redaction.identities.FindWord(host, ETextContext::identities) == nullptr) {
        return std::string(bytes);
    }
    const std::string_view user = bytes.substr(start + 1, at - start - 1);
    return std::string(bytes.substr(0, start + 1)) + redaction.identities.ReplaceValue(user) + "@" +
           redaction.identities.Replace(host, ETextContext::identities) + std::string(bytes.substr(end));
}

template <auto learn>
void LearnWith(std::string_view bytes, TRedactedMachine& redaction) {
    learn(bytes, redaction.identities);
}

template <auto replace>
std::string ReplaceWith(std::string_view bytes, const TRedactedMachine& redaction) {
    return replace(bytes, redaction.identities);
}

struct TFileRule {
    std::string_view pattern;
    void (*learn)(std::string_view bytes, TRedactedMachine& redaction);
    std::string (*replace)(std::string_view bytes, const TRedactedMachine& redaction);
    ETextContext context;  // the identities that are searched for
};

using enum EIdentityKind;

// The first matching row counts.
constexpr TFileRule fileRules[] = {
    {"/sys/firmware/dmi/tables/DMI", LearnSmbiosTable, ReplaceSmbiosTable, ETextContext::anything},
    {"/sys/firmware/dmi/entries/*/raw", LearnSmbiosTable, ReplaceSmbiosTable, ETextContext::anything},
    {"/sys/firmware/dmi/tables/*", LearnNothing, KeepAll, ETextContext::published},
    {"/etc/*release", LearnNothing, KeepAll, ETextContext::published},
    {"/usr/lib/os-release", LearnNothing, KeepAll, ETextContext::published},
    {"/proc/cpuinfo", LearnNothing, KeepAll, ETextContext::published},
    {"/proc/version", LearnNothing, ReplaceBuilder, ETextContext::published},
    {"/proc/sys/kernel/hostname", LearnHostName, ReplaceHostName, ETextContext::identities},
    {"/etc/hostname", LearnHostName, ReplaceHostName, ETextContext::identities},
    {"/proc/**/net/fib_trie", LearnTrie, ReplaceTrie, ETextContext::anything},
    {"/proc/**/net/route", LearnNothing, ReplaceRoutes, ETextContext::anything},
    {"/proc/**/net/if_inet6", LearnIpv6Interfaces, ReplaceIpv6Interfaces, ETextContext::anything},
    {"/proc/**/mountinfo", LearnWith<LearnMounts>, ReplaceWith<ReplaceMounts>, ETextContext::anything},
    {"/run/udev/data/*", LearnWith<LearnProperties>, ReplaceWith<ReplaceProperties>,
     ETextContext::identities},
    {"/run/utmp", LearnSessions, ReplaceSessions, ETextContext::identities},
    {"/sys/**/uevent", LearnWith<LearnProperties>, ReplaceWith<ReplaceProperties>, ETextContext::identities},
    {"/sys/**/class_id", LearnNothing, KeepAll, ETextContext::published},
    {"/sys/**/modalias", LearnNothing, KeepAll, ETextContext::published},
    {"/sys/**/dm/name", LearnForms, ReplaceIdentities, ETextContext::identities},
    {"/sys/**/dm/uuid", LearnForms, ReplaceIdentities, ETextContext::identities},
    {"/sys/**/eeprom", LearnSpdSerial, ReplaceSpdSerial, ETextContext::published},
    {"/sys/**/edid", LearnWith<LearnEdid>, ReplaceWith<ReplaceEdid>, ETextContext::published},
    {"/sys/**/vpd_pg80", LearnWith<LearnVpdSerial>, ReplaceWith<ReplaceVpdSerial>, ETextContext::anything},
    {"/sys/**/vpd_pg83", LearnWith<LearnVpdDesignators>, ReplaceWith<ReplaceVpdDesignators>,
     ETextContext::identities},
    {"/sys/**/wwid", LearnWith<LearnWorldWideId>, ReplaceIdentities, ETextContext::identities},
    // Files with one identity as their content.
    {"/sys/**/serial", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/**/serial_number", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/**/*_serial", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/**/*_asset_tag", LearnValue<assetTag>, ReplaceValue, ETextContext::anything},
    {"/sys/**/*uuid", LearnValue<uuid>, ReplaceValue, ETextContext::anything},
    {"/sys/**/unique_id", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/*sas_address", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/enclosure_identifier", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/enclosure/*/id", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/nguid", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/eui", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/sys/**/cid", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/**/ppin", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/**/subsysnqn", LearnValue<worldWideName>, ReplaceValue, ETextContext::anything},
    {"/proc/device-tree/serial-number", LearnValue<serialNumber>, ReplaceValue, ETextContext::anything},
    {"/sys/firmware/devicetree/base/serial-number", LearnValue<serialNumber>, ReplaceValue,
     ETextContext::anything},
    {"/**", LearnForms, ReplaceAnything, ETextContext::anything},
};
// clang-format on

const TFileRule& FindRule(std::string_view path) {
    return *std::ranges::find_if(
        fileRules, [&](const TFileRule& rule) { return MatchesPathPattern(rule.pattern, path); });
}

// Names of links in /dev contain identities.
ETextContext ContextOf(std::string_view path) {
    return path.starts_with("/dev/") ? ETextContext::identities : ETextContext::anything;
}

std::string ReplacePath(std::string_view path, const TRedactedMachine& redaction) {
    return redaction.identities.Replace(path, ContextOf(path));
}

// Returns the length of the part of a file's path that may contain identities. The names of attributes and
// EFI variables come from the kernel and from standards; those of EFI variables end in a published UUID.
std::size_t GetLengthWithoutAttribute(std::string_view path) {
    return path.starts_with("/sys/") ? path.rfind('/') : path.size();
}

// Attribute names are never redacted, even if one equals a learned serial number.
std::string ReplaceFilePath(std::string_view path, const TRedactedMachine& redaction) {
    const std::size_t length = GetLengthWithoutAttribute(path);
    return ReplacePath(path.substr(0, length), redaction) + std::string(path.substr(length));
}

TRedactedMachine LearnAll(TPseudonyms::TKey key, const TCaptureTree& tree, const TCaptureAnswers& answers) {
    TRedactedMachine redaction{TIdentityTexts(key)};
    if (const auto* node = tree.Find("/sys/firmware/dmi/tables/smbios_entry_point")) {
        redaction.smbiosVersion = ParseSmbiosEntryPoint(node->bytes).value_or(redaction.smbiosVersion);
    }
    for (const auto& [path, node] : tree.GetNodes()) {
        if (node.kind == TCaptureTree::EKind::file) {
            const std::string_view redacted =
                std::string_view(path).substr(0, GetLengthWithoutAttribute(path));
            redaction.identities.LearnForms(redacted, ContextOf(path));
            FindRule(path).learn(node.bytes, redaction);
        } else {
            redaction.identities.LearnForms(path, ContextOf(path));
            redaction.identities.LearnForms(node.bytes, ContextOf(path));
        }
    }
    redaction.identities.LearnHostName(answers.nodeName.value_or(""));
    for (const TInterfaceAddress& row :
         answers.interfaceAddresses.value_or(std::vector<TInterfaceAddress>())) {
        redaction.identities.LearnForms(row.interface.value_or(""), ETextContext::anything);
        redaction.identities.Learn(FormatIpAddress(row.address).value_or(""), EIdentityKind::ipAddress);
    }
    return redaction;
}

std::string ReplaceContents(const std::string& path, const TCaptureTree::TNode& node,
                            const TRedactedMachine& redaction) {
    if (node.kind != TCaptureTree::EKind::file) {
        return redaction.identities.Replace(node.bytes, ContextOf(path));
    }
    // Identities that reach anywhere are replaced in every file.
    return redaction.identities.Replace(FindRule(path).replace(node.bytes, redaction),
                                        ETextContext::published);
}

void RedactAnswers(const TRedactedMachine& redaction, TCaptureAnswers& answers) {
    if (answers.nodeName) {
        answers.nodeName = redaction.identities.ReplaceHostName(*answers.nodeName);
    }
    if (answers.interfaceAddresses) {
        for (TInterfaceAddress& row : *answers.interfaceAddresses) {
            if (row.interface) {
                row.interface = redaction.identities.Replace(*row.interface, ETextContext::anything);
            }
            row.address = redaction.identities.GetPseudonyms().ReplaceAddress(row.address);
        }
    }
    decltype(answers.fileSystemSpaces) spaces;
    for (const auto& [mountPoint, space] : answers.fileSystemSpaces) {
        spaces.emplace(ReplaceMountPoint(mountPoint, redaction.identities), space);
    }
    answers.fileSystemSpaces = std::move(spaces);
    std::map<TPathAccess, EReadStatus> refusals;
    for (const auto& [access, status] : answers.refusals) {
        const auto replace = access.access == EAccess::read ? ReplaceFilePath : ReplacePath;
        refusals.emplace(TPathAccess{access.access, replace(access.path, redaction)}, status);
    }
    answers.refusals = std::move(refusals);
}

std::optional<EIdentityKind> FindInNode(const std::string& path, const TCaptureTree::TNode& node,
                                        const TIdentitySearch& search) {
    if (node.kind != TCaptureTree::EKind::file) {
        return search.Find(node.bytes, ContextOf(path));
    }
    const TFileRule& rule = FindRule(path);
    return rule.replace == ReplaceWith<ReplaceProperties> ? FindInProperties(node.bytes, search)
                                                          : search.Find(node.bytes, rule.context);
}

}  // namespace

TRedactedMachine Redact(TPseudonyms::TKey key, TCaptureTree& tree, TCaptureAnswers& answers) {
    TRedactedMachine redaction = LearnAll(key, tree, answers);
    TCaptureTree redacted;
    for (const auto& [path, node] : tree.GetNodes()) {
        const auto replace = node.kind == TCaptureTree::EKind::file ? ReplaceFilePath : ReplacePath;
        redacted.AddNode(replace(path, redaction), {node.kind, ReplaceContents(path, node, redaction)});
    }
    tree = std::move(redacted);
    RedactAnswers(redaction, answers);
    return redaction;
}

TRedactedMachine RedactCapture(TPseudonyms::TKey key, TCaptureTree& tree) {
    TCaptureTree files;
    for (const auto& [path, node] : tree.GetNodes()) {
        if (path != captureAnswersPath) {
            files.AddNode(path, node);
        }
    }
    const auto* const text = tree.Find(captureAnswersPath);
    TCaptureAnswers answers = text == nullptr ? TCaptureAnswers() : ParseCaptureAnswers(text->bytes);
    TRedactedMachine machine = Redact(key, files, answers);
    if (text != nullptr) {
        files.AddFile(captureAnswersPath, FormatCaptureAnswers(answers));
    }
    tree = std::move(files);
    return machine;
}

std::optional<TIdentityLeft> FindIdentityLeft(const TRedactedMachine& machine, const TCaptureTree& tree) {
    const TIdentitySearch search(machine.identities);
    for (const auto& [path, node] : tree.GetNodes()) {
        auto kind = search.Find(path, ContextOf(path));
        kind = kind ? kind : FindInNode(path, node, search);
        if (kind) {
            return TIdentityLeft{*kind, path};
        }
    }
    return std::nullopt;
}

}  // namespace NVORHOST
