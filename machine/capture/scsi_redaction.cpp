#include "machine/capture/scsi_redaction.h"

#include "machine/parse/scsi_vpd.h"
#include "text/hex.h"
#include "text/lines.h"
#include "text/trim.h"

#include <algorithm>
#include <cstddef>

namespace NVORHOST {
namespace {

std::string_view LastWord(std::string_view text) {
    return text.substr(text.find_last_of(' ') + 1);
}

// Prefixes of names in a registry.
constexpr std::string_view worldWideMarks[] = {"naa.", "eui.", "uuid."};

std::string_view GetBody(std::string_view page) {
    return page.substr(std::min(vpdHeaderBytes, page.size()));
}

constexpr std::size_t leastName = 8;  // minimum bytes of a binary world-wide name

}  // namespace

// A "t10." name is vendor, model and serial number. An "nvme." name contains serial number and model, each as
// hexadecimal digits. A name without a prefix is one identity.
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
    identities.Learn(GetBody(bytes));
}

std::string ReplaceVpdSerial(std::string_view bytes, const TIdentityTexts& identities) {
    const std::size_t header = std::min(vpdHeaderBytes, bytes.size());
    return std::string(bytes.substr(0, header)) + identities.ReplaceValue(bytes.substr(header));
}

void LearnVpdDesignators(std::string_view page, TIdentityTexts& identities) {
    identities.LearnForms(page, ETextContext::identities);
    for (const TVpdDesignator& designator : ParseVpdDesignators(GetBody(page))) {
        if (designator.isBinary && designator.bytes.size() >= leastName) {
            identities.Learn(ToHex(designator.bytes), EIdentityKind::worldWideName);
        }
        if (!designator.isBinary && designator.type == vendorSpecificDesignator) {
            identities.Learn(designator.bytes);
        }
        if (!designator.isBinary && designator.type == t10VendorDesignator) {
            identities.Learn(LastWord(TrimBlanks(designator.bytes)));
        }
    }
}

// World-wide names are binary in the page; all other identities are text.
std::string ReplaceVpdDesignators(std::string_view page, const TIdentityTexts& identities) {
    std::string replaced = identities.Replace(page, ETextContext::identities);
    for (const TVpdDesignator& designator : ParseVpdDesignators(GetBody(page))) {
        if (designator.isBinary && designator.bytes.size() >= leastName) {
            replaced.replace(vpdHeaderBytes + designator.offset, designator.bytes.size(),
                             identities.GetPseudonyms().ReplaceBytes(designator.bytes));
        }
    }
    return replaced;
}

}  // namespace NVORHOST
