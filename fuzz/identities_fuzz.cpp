// A machine with random identities in every file that the collectors read: its redacted capture contains none
// of them in any notation. The input determines the identities and the text around them.
#include "fuzz.h"
#include "machine/capture/redaction.h"
#include "machine/parse/ip_address.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace NVORHOST;

class TInput {
  public:
    TInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    /// Returns zero once the input is used up.
    std::uint8_t TakeByte() {
        const std::uint8_t byte = size_ != 0 ? *data_ : 0;
        data_ += size_ != 0 ? 1 : 0;
        size_ -= size_ != 0 ? 1 : 0;
        return byte;
    }
    bool IsEmpty() const { return size_ == 0; }

    std::string TakeText(std::size_t length, std::string_view characters) {
        std::string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += characters[TakeByte() % characters.size()];
        }
        return text;
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
};

constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view serialCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_ ";

struct TSecrets {
    std::string serial, padded, assetTag, uuid, fileSystem, worldWideName, expander, mac, host, user,
        address4, address6;
};

std::string MakeUuid(TInput& input) {
    const std::string digits = input.TakeText(32, hexDigits);
    return digits.substr(0, 8) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4) + "-" +
           digits.substr(16, 4) + "-" + digits.substr(20);
}

std::string MakeMac(TInput& input) {
    std::string mac = input.TakeText(2, hexDigits);
    for (int i = 0; i < 5; ++i) {
        mac += ":" + input.TakeText(2, hexDigits);
    }
    return mac;
}

TSecrets MakeSecrets(TInput& input) {
    TSecrets secrets;
    secrets.serial = "S" + input.TakeText(2 + input.TakeByte() % 16U, serialCharacters) + "Q";
    secrets.padded = "N" + input.TakeText(2 + input.TakeByte() % 16U, serialCharacters.substr(0, 36));
    secrets.assetTag = input.TakeText(1 + input.TakeByte() % 12U, serialCharacters);
    secrets.uuid = MakeUuid(input);
    secrets.fileSystem = MakeUuid(input);
    secrets.worldWideName = "5" + input.TakeText(15, hexDigits);
    secrets.expander = "5" + input.TakeText(15, hexDigits);
    secrets.mac = MakeMac(input);
    secrets.host = input.TakeText(2 + input.TakeByte() % 8U, letters);
    secrets.user = input.TakeText(2 + input.TakeByte() % 8U, letters);
    secrets.address4 =
        std::string{static_cast<char>(1 + input.TakeByte() % 100), static_cast<char>(input.TakeByte()),
                    static_cast<char>(input.TakeByte()), static_cast<char>(input.TakeByte())};
    secrets.address6 = "\xFD";
    while (secrets.address6.size() < ipv6Bytes) {
        secrets.address6 += static_cast<char>(input.TakeByte());
    }
    return secrets;
}

std::string Without(std::string text, std::string_view separators) {
    std::erase_if(text, [&](char c) { return separators.find(c) != std::string_view::npos; });
    return text;
}

std::string With(std::string text, std::string_view replaced, char by) {
    for (char& c : text) {
        c = replaced.find(c) != std::string_view::npos ? by : c;
    }
    return text;
}

std::string SwapUuid(std::string bytes) {
    for (const auto& [start, end] : {std::pair(0, 4), std::pair(4, 6), std::pair(6, 8)}) {
        std::reverse(bytes.begin() + start, bytes.begin() + end);
    }
    return bytes;
}

// A system, a board, a memory module, an inactive and an OEM structure.
std::string MakeSmbios(const TSecrets& secrets) {
    const auto text = [](const std::string& value) { return value + '\0'; };
    const std::string uuid = SwapUuid(*ParseHex(Without(secrets.uuid, "-")));
    const std::string serial = text(secrets.serial);
    const std::string tag = text(secrets.assetTag);
    std::string table =
        std::string("\x01\x1B\x01\0\0\0\0\x01", 8) + uuid + std::string("\x06\0\0", 3) + serial + '\0';
    table += std::string("\x02\x0F\x02\0\0\0\0\x01\x02\0\0\0\0\x0A\0", 15) + serial + tag + '\0';
    table += std::string("\x11\x1B\x03\0", 4) + std::string(20, '\0') + std::string("\x01\x02\0", 3) +
             text(secrets.padded) + tag + '\0';
    table += std::string("\x7E\x08\x04\0\x01\0\0\0", 8) + serial + '\0';
    table += std::string("\xDD\x14\x05\0", 4) + uuid + serial + '\0';
    return table + std::string("\x7F\x04\x06\0\0\0", 6);
}

// The designators of a disk: its NAA name in binary, and vendor, model and serial number as text.
std::string MakeDesignators(const TSecrets& secrets) {
    const std::string text = "ATA     SAMPLE  " + Without(secrets.serial, " ");
    std::string page = std::string("\x01\x03\0\x08", 4) + *ParseHex(secrets.worldWideName);
    page += std::string("\x02\x01\0", 3) + static_cast<char>(text.size()) + text;
    return std::string("\0\x83\0", 3) + static_cast<char>(page.size()) + page;
}

std::string MakeSession(const TSecrets& secrets) {
    std::string record(384, '\0');
    record[0] = 7;
    record.replace(44, secrets.user.size(), secrets.user);
    record.replace(76, secrets.host.size(), secrets.host);
    record.replace(348, ipv4Bytes, secrets.address4);
    return record;
}

std::string MakeUdevRecord(const TSecrets& secrets) {
    const std::string serial = With(secrets.serial, " ", '_');
    const std::string ip4 = *FormatIpAddress(secrets.address4);
    const std::string ip6 = *FormatIpAddress(secrets.address6);
    return "S:disk/by-id/ata-MODEL_" + serial + "\nS:disk/by-id/wwn-0x" + secrets.worldWideName +
           "\nS:disk/by-path/ip-" + ip6 + ":3260-iscsi-x-lun-1\nE:ID_SERIAL_SHORT=" + serial +
           "\nE:ID_SERIAL=MODEL_" + serial + "\nE:ID_USB_SERIAL_SHORT=" + serial + "\nE:ID_WWN=0x" +
           secrets.worldWideName + "\nE:SCSI_IDENT_LUN_NAA_REG=" + secrets.worldWideName +
           "\nE:SCSI_IDENT_LUN_T10=ATA_SAMPLE_" + secrets.padded + "\nE:ID_PATH=pci-0000:03:00.0-sas-exp0x" +
           secrets.expander + "-phy4-lun-0\nE:ID_PATH_TAG=ip-" + With(ip4, ".", '_') +
           "_3260-iscsi-x-lun-1\nE:TARGET=ip-" + With(ip6, ":", '_') +
           "_3260-iscsi-x-lun-1\nE:ID_FS_UUID=" + secrets.fileSystem + "\nE:DM_VG_NAME=" + secrets.host +
           "-vg\nE:SYSTEMD_WANTS=dev-mapper-" + secrets.host + "\\x2dvg.device\nE:HID_UNIQ=" + secrets.mac +
           "\n";
}

std::string MakeTrie(const std::string& address) {
    return "Local:\n  |-- " + address + "\n     /32 host LOCAL\n";
}

void AddFiles(const TSecrets& secrets, TCaptureTree& tree) {
    const std::string name = "enx" + Without(secrets.mac, ":");
    const auto& [serial, padded, tag, uuid, fileSystem, wwn, expander, mac, host, user, ip4, ip6] = secrets;
    const std::pair<std::string, std::string> files[] = {
        {"/sys/firmware/dmi/tables/smbios_entry_point",
         std::string("_SM3_\0\x18\x03\x02", 9) + std::string(15, '\0')},
        {"/sys/firmware/dmi/tables/DMI", MakeSmbios(secrets)},
        {"/sys/devices/virtual/dmi/id/product_serial", serial + "\n"},
        {"/sys/devices/virtual/dmi/id/chassis_serial", padded + "\n"},
        {"/sys/devices/virtual/dmi/id/board_asset_tag", tag + "\n"},
        {"/sys/devices/virtual/dmi/id/product_uuid", uuid + "\n"},
        {"/sys/hypervisor/uuid", uuid + "\n"},
        {"/sys/devices/nvme0/serial", "    " + padded + "  \n"},
        {"/sys/devices/nvme0n1/wwid", "nvme.1b36-" + ToHex("    " + padded) + "-51454d55-00000001\n"},
        {"/sys/devices/sda/wwid", "naa." + wwn + "\n"},
        {"/sys/devices/sdb/wwid", "t10.ATA     SAMPLE  " + padded + "\n"},
        {"/sys/devices/sda/vpd_pg80", std::string("\0\x80\0", 3) + static_cast<char>(serial.size()) + serial},
        {"/sys/devices/sda/vpd_pg83", MakeDesignators(secrets)},
        {"/sys/devices/sda/sas_address", "0x" + expander + "\n"},
        {"/sys/devices/sda/sda1/uevent", "DEVTYPE=partition\nPARTUUID=" + fileSystem + "\n"},
        {"/sys/devices/virtual/block/md0/md/uuid", fileSystem + "\n"},
        {"/sys/devices/virtual/block/dm-0/dm/name", host + "--vg-root\n"},
        {"/sys/class/power_supply/BAT0/uevent", "POWER_SUPPLY_SERIAL_NUMBER=" + padded + "\n"},
        {"/sys/class/net/" + name + "/operstate", "up\n"},
        {"/proc/sys/kernel/hostname", host + "\n"},
        {"/proc/version", "Linux version 6.1.0 (" + user + "@" + host + ") #1\n"},
        {"/proc/net/fib_trie", MakeTrie(*FormatIpAddress(ip4))},
        {"/proc/net/if_inet6", ToHex(ip6) + " 02 40 20 80 " + name + "\n"},
        {"/run/utmp", MakeSession(secrets)},
        {"/run/udev/data/b8:0", MakeUdevRecord(secrets)},
    };
    for (const auto& [path, bytes] : files) {
        tree.AddFile(path, bytes);
    }
    tree.AddLink("/dev/disk/by-id/ata-MODEL_" + With(serial, " ", '_'), "../../sda");
    tree.AddLink("/dev/disk/by-uuid/" + fileSystem, "../../sda1");
    tree.AddLink("/dev/" + host + "-vg/root", "../dm-0");
}

// Free texts: identities in either case between bytes of the input.
void AddFreeTexts(const TSecrets& secrets, TInput& input, TCaptureTree& tree) {
    for (int i = 0; !input.IsEmpty() && i < 8; ++i) {
        const std::string* const all[] = {&secrets.serial, &secrets.padded, &secrets.uuid,
                                          &secrets.worldWideName, &secrets.mac};
        std::string text = *all[input.TakeByte() % std::size(all)];
        const std::uint8_t how = input.TakeByte();
        std::ranges::transform(text, text.begin(), (how & 1U) != 0 ? ToUpper : ToLower);
        text = (how & 2U) != 0 ? Without(text, ":-_ ") : With(text, ":-_ ", '.');
        text = (how & 4U) != 0 ? ToHex(text) : text;
        std::string around;
        for (std::uint8_t length = input.TakeByte() % 32; length != 0; --length) {
            around += static_cast<char>(input.TakeByte());
        }
        tree.AddFile("/sys/devices/free/" + std::to_string(i), around + " " + text + " " + around);
    }
}

std::string Squeeze(std::string_view text) {
    std::string squeezed;
    for (const char c : text) {
        if (IsAlphanumeric(c)) {
            squeezed += ToLower(c);
        }
    }
    return squeezed;
}

bool IsWordOf(const std::string& text, const std::string& word) {
    for (auto place = text.find(word); place != std::string::npos; place = text.find(word, place + 1)) {
        const bool starts = place == 0 || !IsAlphanumeric(text[place - 1]);
        const std::size_t end = place + word.size();
        if (starts && (end == text.size() || !IsAlphanumeric(text[end]))) {
            return true;
        }
    }
    return false;
}

// The notations of an identity that is distinctive enough to be searched for in all texts.
void RequireGone(const std::string& secret, EIdentityKind kind, const std::vector<std::string>& texts) {
    if (FindReach(secret, kind) != EIdentityReach::anywhere) {
        return;
    }
    const std::string plain = Squeeze(secret);
    const std::string hex = ToHex(secret);
    for (const std::string& text : texts) {
        const std::string squeezed = Squeeze(text);
        Require(squeezed.find(plain) == std::string::npos, "no identity is left");
        Require(squeezed.find(hex) == std::string::npos, "no identity is left in hexadecimal digits");
        if (const auto decoded = ParseHex(plain); decoded && plain.size() >= 12) {
            const std::string& bytes = *decoded;
            Require(text.find(bytes) == std::string::npos, "no identity is left in bytes");
            Require(plain.size() != 32 || text.find(SwapUuid(bytes)) == std::string::npos,
                    "no UUID is left in the order of firmware");
        }
    }
}

void RequireHostGone(const std::string& host, const TCaptureTree& tree) {
    if (FindReach(host, EIdentityKind::hostName) == EIdentityReach::itself) {
        return;
    }
    for (const auto& [path, node] : tree.GetNodes()) {
        const bool isName = path.ends_with("/dm/name") || path.ends_with("/hostname");
        Require(!isName || !IsWordOf(node.bytes, host), "no host name is left in names");
        Require(!path.starts_with("/dev/") || !IsWordOf(path, host), "no host name is left in links");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TInput input(data, size);
    const TSecrets secrets = MakeSecrets(input);
    TCaptureTree tree;
    TCaptureAnswers answers;
    answers.nodeName = secrets.host;
    answers.interfaceAddresses = {{"eth0", secrets.address4}, {"eth0", secrets.address6}};
    AddFiles(secrets, tree);
    AddFreeTexts(secrets, input, tree);
    const TRedactedMachine machine = Redact({0x0123456789ABCDEFU, 0xFEDCBA9876543210U}, tree, answers);
    tree.AddFile(captureAnswersPath, FormatCaptureAnswers(answers));

    std::vector<std::string> texts;
    for (const auto& [path, node] : tree.GetNodes()) {
        texts.push_back(path);
        texts.push_back(node.bytes);
    }
    for (const std::string* serial : {&secrets.serial, &secrets.padded, &secrets.assetTag}) {
        RequireGone(*serial, EIdentityKind::serialNumber, texts);
    }
    for (const std::string* uuid : {&secrets.uuid, &secrets.fileSystem}) {
        RequireGone(*uuid, EIdentityKind::uuid, texts);
    }
    for (const std::string* name : {&secrets.worldWideName, &secrets.expander, &secrets.mac}) {
        RequireGone(*name, EIdentityKind::worldWideName, texts);
    }
    RequireHostGone(secrets.host, tree);
    Require(answers.interfaceAddresses->at(0).address != secrets.address4, "every address has a pseudonym");
    Require(!FindIdentityLeft(machine, tree), "the search finds nothing");
    return 0;
}
