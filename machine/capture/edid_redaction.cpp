#include "machine/capture/edid_redaction.h"

#include "machine/parse/edid.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace NVORHOST {
namespace {

constexpr std::size_t blockSize = 128;

unsigned AddUp(std::string_view bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), 0U,
                           [](unsigned sum, char byte) { return sum + static_cast<std::uint8_t>(byte); });
}

// Makes the last byte of the base block absorb the difference to the sum of the original.
void KeepSum(std::string_view original, std::string& block) {
    const unsigned difference = AddUp(original.substr(0, blockSize)) - AddUp(block);
    block.back() = static_cast<char>(static_cast<std::uint8_t>(block.back()) + difference);
}

}  // namespace

void LearnEdid(std::string_view bytes, TIdentityTexts& identities) {
    const auto serials = FindEdidSerials(bytes);
    for (const TEdidField& text : serials ? serials->texts : std::vector<TEdidField>()) {
        identities.Learn(bytes.substr(text.offset, text.length), EIdentityKind::serialNumber);
    }
}

std::string ReplaceEdid(std::string_view bytes, const TIdentityTexts& identities) {
    const auto serials = FindEdidSerials(bytes);
    if (!serials) {
        return identities.Replace(bytes, ETextContext::anything);
    }
    std::string block(bytes.substr(0, blockSize));
    const auto& [number, texts] = *serials;
    block.replace(number.offset, number.length,
                  identities.GetPseudonyms().ReplaceBytes(bytes.substr(number.offset, number.length)));
    for (const TEdidField& text : texts) {
        block.replace(text.offset, text.length,
                      identities.ReplaceValue(bytes.substr(text.offset, text.length)));
    }
    KeepSum(bytes, block);
    return block + std::string(bytes.size() - blockSize, '\0');
}

}  // namespace NVORHOST
