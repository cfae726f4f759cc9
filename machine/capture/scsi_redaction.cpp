#include "machine/capture/scsi_redaction.h"

#include "machine/parse/byte_view.h"
#include "text/hex.h"
#include "text/lines.h"
#include "text/trim.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace NVORHOST {

namespace {

std::string_view LastWord(std::string_view text) {
    return text.substr(text.find_last_of(' ') + 1);
}

// Marks of names in a registry, which follow.
constexpr std::string_view worldWideMarks[] = {"naa.", "eui.", "uuid."};

constexpr std::size_t vpdHeaderSize = 4;

// A page of designators: each has its code set, type and length in front.
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

constexpr std::size_t leastName = 8;  // bytes of a binary designator that is a world-wide name

}  // namespace

// "t10." is vendor, model and serial number. "nvme." holds a serial number and a model, each as hexadecimal
// digits. What has no such mark is one name.
void LearnWorldWideId(std::string_view bytes, TIdentityTexts& identities) {
    std::string_view text = TrimBlanks(bytes);
    if (text.starts_with("t10.")) {
        identities.Learn(LastWord(text));
        return;
    }
    if (text.starts_with("nvme.")) {
        const std::string_view digits = SplitAt(SplitAt(text, '-').second, '-').first;
        identities.Learn(ParseHex(digits).value_or(std::string(digits)));
        return;
    }
    for (const std::string_view mark : worldWideMarks) {
        text.remove_prefix(text.starts_with(mark) ? mark.size() : 0);
    }
    identities.Learn(text, EIdentityKind::worldWideName);
}

void LearnVpdSerial(std::string_view bytes, TIdentityTexts& identities) {
    identities.Learn(bytes.substr(std::min(vpdHeaderSize, bytes.size())));
}

std::string ReplaceVpdSerial(std::string_view bytes, const TIdentityTexts& identities) {
    const std::size_t header = std::min(vpdHeaderSize, bytes.size());
    return std::string(bytes.substr(0, header)) + identities.ReplaceValue(bytes.substr(header));
}

void LearnVpdDesignators(std::string_view page, TIdentityTexts& identities) {
    constexpr std::uint8_t vendorSpecific = 0;
    constexpr std::uint8_t vendorAndSerial = 1;  // T10 vendor identification
    identities.LearnForms(page, ETextContext::identities);
    for (const TDesignator& designator : FindDesignators(page)) {
        if (designator.isBinary && designator.bytes.size() >= leastName) {
            identities.Learn(ToHex(designator.bytes), EIdentityKind::worldWideName);
        }
        if (!designator.isBinary && designator.type == vendorSpecific) {
            identities.Learn(designator.bytes);
        }
        if (!designator.isBinary && designator.type == vendorAndSerial) {
            identities.Learn(LastWord(TrimBlanks(designator.bytes)));
        }
    }
}

// World-wide names stand in it as bytes, what else identifies as text.
std::string ReplaceVpdDesignators(std::string_view page, const TIdentityTexts& identities) {
    std::string replaced = identities.Replace(page, ETextContext::identities);
    for (const TDesignator& designator : FindDesignators(page)) {
        if (designator.isBinary && designator.bytes.size() >= leastName) {
            replaced.replace(designator.start, designator.bytes.size(),
                             identities.GetPseudonyms().ReplaceBytes(designator.bytes));
        }
    }
    return replaced;
}

}  // namespace NVORHOST
