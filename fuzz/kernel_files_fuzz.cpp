// Every parser of the kernel's files accepts any bytes. The first byte selects the parser.
#include "fuzz.h"
#include "machine/parse/acpi_table.h"
#include "machine/parse/cdrom_info.h"
#include "machine/parse/cpu_list.h"
#include "machine/parse/cpuinfo.h"
#include "machine/parse/device_tree.h"
#include "machine/parse/iomem.h"
#include "machine/parse/ip_address.h"
#include "machine/parse/meminfo.h"
#include "machine/parse/os_release.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/proc_net.h"
#include "machine/parse/proc_stat.h"
#include "machine/parse/process_stat.h"
#include "machine/parse/scsi_vpd.h"
#include "machine/parse/spd_eeprom.h"
#include "machine/parse/udev_record.h"
#include "machine/parse/uevent.h"
#include "machine/parse/utmp.h"
#include "text/numbers.h"
#include "text/printable_text.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>

using namespace NVORHOST;  // NOLINT(google-build-using-namespace): uses all parsers of a folder

namespace {

void ParsePrintable(std::string_view text) {
    const auto once = ToPrintableText(text);
    const auto twice = ToPrintableText(once.text);
    Require(twice.text == once.text && twice.replacements == 0, "printable text passes unchanged");
}

void ParseTextOfAddress(std::string_view text) {
    const auto address = ParseIpv4Address(text);
    Require(!address || FormatIpAddress(*address) == text, "an address is written as it was read");
}

void WriteAddress(std::string_view bytes) {
    const auto text = FormatIpAddress(bytes);
    Require(text.has_value() == (bytes.size() == ipv4Bytes || bytes.size() == ipv6Bytes),
            "two kinds of addresses");
    Require(bytes.size() != ipv4Bytes || ParseIpv4Address(*text) == bytes, "what is written reads back");
}

void ParseFirstDeviceTreeString(std::string_view bytes) {
    const auto all = ParseDeviceTreeStrings(bytes);
    const auto first = ParseDeviceTreeString(bytes);
    Require(first.has_value() == !all.empty(), "a list has a first text unless it is empty");
    Require(!first || *first == all.front(), "the first text is that of the list");
}

void ParseWholeNumber(std::string_view text) {
    const auto number = ParseNumber<std::int64_t>(text);
    Require(!number || ParseNumber<std::int64_t>(std::to_string(*number)) == number, "a number reads back");
    (void)ParseHexNumber<std::uint64_t>(text);
}

void DropPlaceholder(std::string_view text) {
    const auto kept = WithoutPlaceholder(std::string(text));
    Require(kept.has_value() != IsPlaceholder(text), "placeholders alone are dropped");
}

void ParseProcessorNumbers(std::string_view text) {
    const auto numbers = ParseCpuList(text);
    Require(std::ranges::adjacent_find(numbers, std::ranges::greater_equal{}) == numbers.end(),
            "each number once, ascending");
    Require(numbers.size() <= 65536, "no more than there can be");
}

void ParseMemoryRanges(std::string_view text) {
    const auto ranges = ParseIoMem(text);
    Require(std::ranges::all_of(ranges, [](const TIoMemRange& range) { return range.first <= range.last; }),
            "ranges end where they start or above");
}

void DecodeEscapes(std::string_view text) {
    Require(DecodeUdevEscapes(text).size() <= text.size(), "escapes are longer than what they stand for");
}

// The result is a view of the text, not a copy.
void FindParts(std::string_view text) {
    for (const auto& part : {FindUdevProperty(text, "ID_SERIAL"), FindUeventValue(text, "DRIVER")}) {
        Require(!part || part->empty() ||
                    (part->data() >= text.data() && part->data() + part->size() <= text.data() + text.size()),
                "what is found lies within the text");
    }
}

void CountLogins(std::string_view bytes) {
    constexpr std::size_t recordBytes = 384;
    Require(CountUserProcesses(bytes) <= bytes.size() / recordBytes, "no more logins than records");
}

// The first byte of an input is the index of the row. Append new rows, so that the corpus remains valid.
constexpr void (*parsers[])(std::string_view) = {
    [](std::string_view text) { (void)ParseCpuInfo(text); },
    ParseProcessorNumbers,
    [](std::string_view text) { (void)ParseMemInfo(text); },
    [](std::string_view text) { (void)ParseOsRelease(text); },
    ParseMemoryRanges,
    [](std::string_view text) { (void)ParseBootTime(text); },
    [](std::string_view text) { (void)ParseProcessStat(text); },
    [](std::string_view text) { (void)ParseLocalIpv4Addresses(text); },
    [](std::string_view text) { (void)ParseIpv6Interfaces(text); },
    [](std::string_view text) { (void)FindInterface(ParseIpv4Routes(text), "192.0.2.1"); },
    FindParts,
    DecodeEscapes,
    FindParts,
    CountLogins,
    [](std::string_view text) { (void)ParseVpdSerial(text); },
    [](std::string_view text) { (void)ParseVpdAtaModel(text); },
    [](std::string_view text) { (void)ParseSpdEeprom(text); },
    [](std::string_view text) { (void)ParseAcpiTableOrigin(text); },
    [](std::string_view text) { (void)ParseDeviceTreeStrings(text); },
    [](std::string_view text) { (void)ParseRounded(text); },
    ParsePrintable,
    [](std::string_view text) { (void)ParseCdromInfo(text); },
    ParseTextOfAddress,
    WriteAddress,
    ParseFirstDeviceTreeString,
    ParseWholeNumber,
    DropPlaceholder,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        parsers[data[0] % std::size(parsers)](AsText(data + 1, size - 1));
    }
    return 0;
}
