// The redacted form of any captured file has the same length, and is the same for the same key. The first
// byte selects the file.
#include "fuzz.h"
#include "machine/capture/redaction.h"

#include <iterator>
#include <string>

namespace {

// Append new files, so that the corpus remains valid.
constexpr const char* paths[] = {
    "/sys/firmware/dmi/tables/DMI",
    "/sys/block/sda/device/vpd_pg80",
    "/sys/block/sda/device/vpd_pg83",
    "/sys/block/sda/device/wwid",
    "/sys/bus/i2c/drivers/ee1004/0-0050/eeprom",
    "/sys/class/dmi/id/product_uuid",
    "/sys/block/sda/sda1/uevent",
    "/run/udev/data/b8:0",
    "/run/utmp",
    "/proc/net/fib_trie",
    "/proc/net/if_inet6",
    "/proc/net/route",
    "/etc/hostname",
};

std::string RedactFile(const std::string& path, const std::string& bytes) {
    constexpr NVORHOST::TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};
    NVORHOST::TCaptureTree tree;
    NVORHOST::TCaptureAnswers answers;
    tree.AddFile(path, bytes);
    NVORHOST::Redact(key, tree, answers);
    const auto* node = tree.Find(path);
    Require(node != nullptr, "a file without identities in its path keeps it");
    return node->bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        const std::string path = paths[data[0] % std::size(paths)];
        const std::string bytes(AsText(data + 1, size - 1));
        const std::string redacted = RedactFile(path, bytes);
        Require(redacted.size() == bytes.size(), "a file stays as long as it was");
        Require(RedactFile(path, bytes) == redacted, "pseudonyms follow from the key");
    }
    return 0;
}
