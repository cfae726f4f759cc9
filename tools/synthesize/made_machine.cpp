#include "tools/synthesize/made_machine.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

namespace NSYNTHESIS {
namespace {

using NVORHOST::MakeSmbiosStructure;
using NVORHOST::ParseByteLine;
using NVORHOST::TMachine;
using NVORHOST::TMemoryFiles;

[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...) {
    std::array<char, 512> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return {text.data(), std::min(static_cast<std::size_t>(length), text.size() - 1)};
}

// The firmware's table, structure by structure.
class TFirmwareTable {
  public:
    // `line` has the form of ParseMachineTree.
    std::uint16_t Add(const std::string& line) {
        bytes_ += MakeSmbiosStructure(line, next_);
        return next_++;
    }
    const std::string& GetBytes() const { return bytes_; }

  private:
    std::string bytes_;
    std::uint16_t next_ = 0x0100;
};

std::string Quote(std::string_view text) {
    return " \"" + std::string(text) + "\"";
}

// Returns the bytes of a UUID as firmware has them: the first three fields are little-endian.
std::string MakeUuidBytes(std::string_view uuid) {
    constexpr int places[] = {6, 4, 2, 0, 11, 9, 16, 14, 19, 21, 24, 26, 28, 30, 32, 34};
    std::string bytes;
    for (const int place : places) {
        bytes += std::string(uuid.substr(static_cast<std::size_t>(place), 2)) + " ";
    }
    return bytes;
}

void AddSystem(TFirmwareTable& table, const TMachineState& state) {
    const TModel& model = *state.model;
    table.Add("0: 01 02 00 00 03 ff 00 00 00 00 00 00 00 00" + Quote("Example BIOS") +
              Quote(state.hasOldFirmware ? model.oldFirmware : model.firmware) +
              Quote(state.hasOldFirmware ? model.oldFirmwareDate : model.firmwareDate));
    table.Add("1: 01 02 03 04 " + MakeUuidBytes(MakeUuid(state)) + "06 05 06" + Quote(model.vendor) +
              Quote(model.name) + Quote("A1") + Quote(MakeSerialNumber(state)) + Quote("SKU-1") +
              Quote("Rack"));
    table.Add("2: 01 02 03 04 00 01 00 00 00 0a" + Quote(model.vendor) + Quote("Board " + model.name) +
              Quote("1") + Quote("MB" + MakeSerialNumber(state)));
    table.Add("3: 01 97 03 02 04 03 04 03 03 00 00 00 00 02 02 00 00 05" + Quote(model.vendor) +
              Quote("CH777") + Quote("V3") + Quote("CH" + MakeSerialNumber(state)) + Quote("CH-2U"));
    for (std::uint64_t i = 1; i <= model.sockets; ++i) {
        table.Add(
            "4: 01 03 b3 02 f1 06 04 00 ff fb eb bf 03 8a 64 00 a0 0f 34 08 41 2b 00 00 00 00 00 00 "
            "00 00 00 08 08 10 fc 00 b3 00" +
            Quote(Format("CPU%u", static_cast<unsigned>(i))) + Quote("Example Processors") +
            Quote(model.processor));
    }
    for (int i = 1; i <= 2; ++i) {
        table.Add(Format("39: 0%d 01 02 03 04 00 05 06 ee 02 93 11", i) + Quote(Format("PSU %d", i)) +
                  Quote("Platinum 750W") + Quote("Example Power") +
                  Quote(Format("PS%07u%d", static_cast<unsigned>(state.number), i)) + Quote("PN-750P") +
                  Quote("A1"));
    }
}

std::string MakeWord(std::uint64_t number) {
    return Format("%02x %02x ", static_cast<unsigned>(number & 0xFF),
                  static_cast<unsigned>(number >> 8 & 0xFF));
}

// A module of 32 GiB and more has its size in a field of its own.
std::string MakeModuleLine(const TModel& model, const TModule& module, const std::string& array,
                           const std::string& place) {
    const bool isLarge = model.moduleMiB >= 0x7FFF;
    const std::uint64_t speed = module.isSlower ? model.moduleSpeed / 2 : model.moduleSpeed;
    return "17: " + array + "fe ff 48 00 40 00 " + MakeWord(isLarge ? 0x7FFF : model.moduleMiB) +
           "09 00 01 02 1a 80 00 " + MakeWord(model.moduleSpeed) + "03 04 05 06 02 " +
           MakeWord(isLarge ? model.moduleMiB : 0) + MakeWord(isLarge ? model.moduleMiB >> 16 : 0) +
           MakeWord(speed) + "b0 04 b0 04 b0 04" + place + Quote("Example Memory") + Quote(module.serial) +
           Quote("Asset") + Quote(model.modulePart);
}

void AddMemory(TFirmwareTable& table, const TMachineState& state) {
    const std::uint64_t slots = state.slots.size();
    const std::string array =
        MakeWord(table.Add("16: 03 03 06 00 00 00 80 fe ff " + MakeWord(slots) + "00 00 00 00 80 01 00 00"));
    for (std::uint64_t i = 0; i < slots; ++i) {
        const unsigned socket = static_cast<unsigned>(i * state.model->sockets / slots);
        const std::string place =
            Quote(Format("P%u-DIMM_%c%u", socket + 1, static_cast<char>('A' + i / 2 % 26),
                         static_cast<unsigned>(i % 2 + 1))) +
            Quote(Format("P%u_CHANNEL_%c", socket + 1, static_cast<char>('A' + i / 2 % 26)));
        table.Add(state.slots[i]
                      ? MakeModuleLine(*state.model, *state.slots[i], array, place)
                      : "17: " + array + "fe ff 00 00 00 00 00 00 09 00 01 02 02 00 00 00 00 00 00 00 00 00" +
                            place);
    }
}

void AddFirmware(TMemoryFiles& files, const TMachineState& state) {
    files.AddFile("/sys/firmware/dmi/tables/smbios_entry_point",
                  ParseByteLine("\"_SM_\" de 1f 02 08 9b 00 00 00 00 00 00 00 \"_DMI_\" f6 b3 05 40 fa ff 3f "
                                "1a 00 28"));
    TFirmwareTable table;
    AddSystem(table, state);
    AddMemory(table, state);
    table.Add("127:");
    files.AddFile("/sys/firmware/dmi/tables/DMI", table.GetBytes());
}

std::uint64_t SumMemoryMiB(const TMachineState& state) {
    std::uint64_t count = 0;
    for (const auto& slot : state.slots) {
        count += slot ? 1U : 0U;
    }
    return count * state.model->moduleMiB;
}

void AddOperatingSystem(TMemoryFiles& files, const TMachineState& state, std::uint64_t day) {
    files.AddFile("/etc/os-release",
                  "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
                  "VERSION_ID=\"12\"\n");
    const std::uint64_t totalKiB = SumMemoryMiB(state) * 1000;
    const std::uint64_t freeKiB = totalKiB / 2 + (state.number * 7919 + day * 104729) % 1'000'000;
    files.AddFile("/proc/meminfo", "MemTotal: " + std::to_string(totalKiB) +
                                       " kB\nMemFree: " + std::to_string(freeKiB) +
                                       " kB\nMemAvailable: " + std::to_string(freeKiB) +
                                       " kB\nSwapTotal: 8388604 kB\nSwapFree: 8000000 kB\n");
    files.AddFile("/proc/stat", "cpu  1 2 3 4 5 6 7 8 9 10\nbtime 1771000000\n");
    std::string users(1152, '\0');
    users[0] = 2;
    files.AddFile("/run/utmp", users);
    files.AddLink("/proc/self", "4711");
    for (std::uint64_t i = 0; i < 20 + day % 5; ++i) {
        files.AddFolder("/proc/" + std::to_string(4711 + i));
    }
}

void AddProcessors(TMemoryFiles& files, const TMachineState& state) {
    std::string text;
    const std::uint64_t count = state.model->sockets;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        text += "processor\t: " + number +
                "\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 79\nmodel name\t: " +
                state.model->processor +
                "\nstepping\t: 1\nmicrocode\t: 0xb000040\ncpu cores\t: 8\ncpu MHz\t\t: 1200.000\n"
                "physical id\t: " +
                number + "\nflags\t\t: fpu vme lm\n\n";
        const std::string folder = "/sys/devices/system/cpu/cpu" + number;
        files.AddFile(folder + "/topology/physical_package_id", number + "\n");
        files.AddFile(folder + "/topology/package_cpus_list", number + "\n");
        files.AddFile(
            folder + "/topology/ppin",
            Format("0x%08x%08x\n", static_cast<unsigned>(state.number + 1), static_cast<unsigned>(i)));
        files.AddFile(folder + "/cpufreq/cpuinfo_max_freq", "3000000\n");
        files.AddFile("/sys/devices/system/node/node" + number + "/cpulist", number + "\n");
    }
    files.AddFile("/proc/cpuinfo", text);
    files.AddFolder("/sys/devices/system/cpu/cpufreq");
}

// Returns 256 bytes of configuration space.
std::string MakeConfiguration(std::uint16_t vendor, std::uint16_t device, std::uint32_t classCode,
                              bool isBridge) {
    std::string bytes(256, '\0');
    const auto put = [&](std::size_t offset, std::uint64_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            bytes[offset + i] = static_cast<char>(value >> (8 * i) & 0xFF);
        }
    };
    put(0x00, vendor, 2);
    put(0x02, device, 2);
    put(0x04, 0x0407, 2);
    put(0x06, 0x0010, 2);
    put(0x08, 0x02, 1);
    put(0x09, classCode, 3);
    put(0x0C, 0x10, 1);
    put(0x0E, isBridge ? 1 : 0, 1);
    if (!isBridge) {
        put(0x2C, 0x1028, 2);
        put(0x2E, device, 2);
    }
    put(0x3D, 0x01, 1);
    return bytes;
}

struct TFunction {
    std::uint16_t device;
    std::uint32_t classCode;
    std::uint64_t width = 8;         // lanes of the function
    std::uint64_t currentWidth = 8;  // lanes in use
};

void AddFunction(TMemoryFiles& files, const std::string& address, const std::string& folder,
                 const TFunction& function, bool isBridge) {
    files.AddLink("/sys/bus/pci/devices/" + address, "../../.." + folder.substr(4));
    files.AddFile(folder + "/ari_enabled", "0\n");
    files.AddFile(folder + "/max_link_speed", "8.0 GT/s PCIe\n");
    files.AddFile(folder + "/max_link_width", std::to_string(function.width) + "\n");
    files.AddFile(folder + "/current_link_speed", "8.0 GT/s PCIe\n");
    files.AddFile(folder + "/current_link_width", std::to_string(function.currentWidth) + "\n");
    files.AddFile(folder + "/numa_node", "0\n");
    files.AddFile(folder + "/config", MakeConfiguration(isBridge ? 0x8086 : 0x1000, function.device,
                                                        function.classCode, isBridge));
}

// Adds a root port and a function in it; returns the folder of the function.
std::string AddAdapter(TMemoryFiles& files, std::uint64_t index, const TFunction& function) {
    const std::string port =
        Format("0000:00:%02x.%u", static_cast<unsigned>(2 + index / 8), static_cast<unsigned>(index % 8));
    const std::string portFolder = "/sys/devices/pci0000:00/" + port;
    const std::string address = Format("0000:%02x:00.0", static_cast<unsigned>(1 + index));
    AddFunction(files, port, portFolder, {0x6F04, 0x060400, function.width, function.currentWidth},
                /*isBridge=*/true);
    AddFunction(files, address, portFolder + "/" + address, function, /*isBridge=*/false);
    return portFolder + "/" + address;
}

void AddDisk(TMemoryFiles& files, const std::string& adapter, const TModel& model, const TDisk& disk,
             std::size_t bay) {
    const std::string number = std::to_string(bay);
    const std::string name = "sd" + std::string(1, static_cast<char>('a' + bay));
    const std::string device = adapter + "/host0/port-0:" + number + "/end_device-0:" + number;
    const std::string unit = device + "/target0:0:" + number + "/0:0:" + number + ":0";
    const std::string block = unit + "/block/" + name;
    files.AddLink("/sys/block/" + name, ".." + block.substr(4));
    files.AddFile(block + "/size", std::to_string(model.diskGB * 1'000'000'000 / 512) + "\n");
    files.AddFile(block + "/removable", "0\n");
    files.AddFile(block + "/queue/logical_block_size", "512\n");
    files.AddFile(block + "/queue/physical_block_size", "4096\n");
    files.AddLink(block + "/device", "../..");
    files.AddLink(unit + "/subsystem", "/sys/bus/scsi");
    files.AddFile(unit + "/type", "0\n");
    files.AddFile(unit + "/vendor", "SAMPLE\n");
    files.AddFile(unit + "/model", model.diskModel + "\n");
    files.AddFile(unit + "/rev", (disk.hasOldFirmware ? model.oldDiskFirmware : model.diskFirmware) + "\n");
    files.AddFile(unit + "/state", "running\n");
    files.AddFile(unit + "/wwid",
                  Format("naa.5000c5%010llx\n", static_cast<unsigned long long>(disk.number)));
    const std::string serial = MakeSerialNumber(disk);
    files.AddFile(unit + "/vpd_pg80", std::string("\0\x80\0", 3) + static_cast<char>(serial.size()) + serial);
    const std::string end = device + "/sas_device/end_device-0:" + number;
    files.AddFile(end + "/phy_identifier", number + "\n");
    files.AddFile(end + "/enclosure_identifier", "0x500a098000c0ffee\n");
    files.AddFile(end + "/bay_identifier", number + "\n");
}

void AddStorage(TMemoryFiles& files, const TMachineState& state) {
    const std::string adapter = AddAdapter(files, 0, {0x0097, 0x010700});
    const std::string host = adapter + "/host0/scsi_host/host0";
    files.AddLink("/sys/class/scsi_host/host0", "../.." + host.substr(4));
    files.AddFile(host + "/proc_name", "mpt3sas\n");
    for (std::size_t bay = 0; bay < state.disks.size(); ++bay) {
        AddDisk(files, adapter, *state.model, state.disks[bay], bay);
    }
}

void AddNetwork(TMemoryFiles& files, const TMachineState& state) {
    const std::string adapter = AddAdapter(files, 1, {0x10FB, 0x020000});
    for (std::uint64_t i = 0; i < state.model->ports; ++i) {
        const std::string name = "ens1f" + std::to_string(i);
        const std::string folder = adapter + "/net/" + name;
        const unsigned number = static_cast<unsigned>(state.number);
        files.AddLink("/sys/class/net/" + name, "../.." + folder.substr(4));
        files.AddLink(folder + "/device", "../..");
        files.AddFile(folder + "/type", "1\n");
        files.AddFile(folder + "/flags", "0x1003\n");
        files.AddFile(folder + "/operstate", "up\n");
        files.AddFile(folder + "/address",
                      Format("02:%02x:%02x:%02x:%02x:%02x\n", number >> 24 & 0xFF, number >> 16 & 0xFF,
                             number >> 8 & 0xFF, number & 0xFF, static_cast<unsigned>(i)));
        files.AddFile(folder + "/addr_assign_type", "0\n");
        files.AddFile(folder + "/dev_port", std::to_string(i) + "\n");
        files.AddFile(folder + "/mtu", "1500\n");
        files.AddFile(folder + "/speed", "10000\n");
        files.AddFile(folder + "/duplex", "full\n");
    }
}

void AddAdapters(TMemoryFiles& files, const TMachineState& state) {
    for (std::uint64_t i = 0; i < state.model->adapters; ++i) {
        const bool isNarrow = state.hasNarrowLink && i == 0;
        AddAdapter(files, 2 + i,
                   {static_cast<std::uint16_t>(0x2000 + i), i % 2 == 0 ? 0x020000U : 0x010802U, 8,
                    isNarrow ? 4U : 8U});
    }
}

void SetCalls(TMachine& machine, const TMachineState& state) {
    machine.calls.nodeName = MakeNodeName(state);
    machine.calls.kernelRelease = "6.1.0-13-amd64";
    machine.calls.architecture = "x86_64";
    machine.calls.pageSizeBytes = 4096;
    machine.calls.clockTicksPerSecond = 100;
    machine.calls.utcOffsetMinutes = 0;
}

}  // namespace

std::string MakeNodeName(const TMachineState& state) {
    return Format("m%07u.example.net", static_cast<unsigned>(state.number));
}

TMachine MakeMachine(const TMachineState& state, std::uint64_t day) {
    TMachine machine;
    SetCalls(machine, state);
    AddOperatingSystem(machine.files, state, day);
    AddFirmware(machine.files, state);
    AddProcessors(machine.files, state);
    AddStorage(machine.files, state);
    AddNetwork(machine.files, state);
    AddAdapters(machine.files, state);
    return machine;
}

}  // namespace NSYNTHESIS
