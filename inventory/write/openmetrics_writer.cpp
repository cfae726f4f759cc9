#include "inventory/write/openmetrics_writer.h"

#include "documents/document_error.h"
#include "inventory/model/meaning.h"
#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/shown_columns.h"
#include "inventory/write/well_formed_text.h"
#include "text/ascii.h"
#include "text/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

constexpr std::size_t maxBytes = std::size_t{16} << 20;

// clang-format off
constexpr TGauge gauges[] = {
    {"OperatingSystem", "TotalVisibleMemorySize",     "noxinfo_visible_memory_bytes",                                "Memory that the operating system can use."},
    {"OperatingSystem", "TotalSwapSpaceSize",         "noxinfo_swap_space_bytes",                                    "Size of the swap space."},
    {"Processor",       "MaxClockSpeed",              "noxinfo_processor_max_clock_hertz",                           "Highest clock rate of a processor."},
    {"Processor",       "NumberOfEnabledCores",       "noxinfo_processor_enabled_cores",                             "Enabled cores of a processor."},
    {"CacheMemory",     "NumberOfBlocks",             "noxinfo_cache_size_bytes",                                    "Size of a processor's cache."},
    {"PhysicalMemory",  "Capacity",                   "noxinfo_memory_module_size_bytes",                            "Size of a memory module."},
    {"PhysicalMemory",  "Speed",                      "noxinfo_memory_module_speed_transfers_per_second",            "Speed that a memory module is made for."},
    {"PhysicalMemory",  "ConfiguredMemoryClockSpeed", "noxinfo_memory_module_configured_speed_transfers_per_second", "Speed at which a memory module runs."},
    {"MemoryCapacity",  "MaximumMemoryCapacity",      "noxinfo_memory_capacity_bytes",                               "Largest memory that an array of memory slots can hold."},
    {"DiskDrive",       "MaxMediaSize",               "noxinfo_disk_size_bytes",                                     "Size of a disk."},
    {"LogicalVolume",   "NumberOfBlocks",             "noxinfo_volume_size_bytes",                                   "Size of a volume."},
    {"DiskPartition",   "PartitionSize",              "noxinfo_partition_size_bytes",                                "Size of a partition."},
    {"LocalFileSystem", "FileSystemSize",             "noxinfo_file_system_size_bytes",                              "Size of a file system."},
    {"EthernetPort",    "Speed",                      "noxinfo_ethernet_port_speed_bytes_per_second",                "Speed of the link of an Ethernet port."},
    {"EthernetPort",    "MaxSpeed",                   "noxinfo_ethernet_port_max_speed_bytes_per_second",            "Highest speed of an Ethernet port."},
    {"IBPort",          "Speed",                      "noxinfo_infiniband_port_speed_bytes_per_second",              "Speed of the link of an InfiniBand port."},
    {"IBPort",          "MaxSpeed",                   "noxinfo_infiniband_port_max_speed_bytes_per_second",          "Highest speed of an InfiniBand port."},
    {"Battery",         "DesignCapacity",             "noxinfo_battery_design_capacity_joules",                      "Capacity of a battery when it was new."},
    {"Battery",         "FullChargeCapacity",         "noxinfo_battery_full_charge_capacity_joules",                 "Capacity of a battery when it is fully charged."},
    {"Battery",         "DesignVoltage",              "noxinfo_battery_design_voltage_volts",                        "Voltage of a battery."},
    {"PowerSupply",     "TotalOutputPower",           "noxinfo_power_supply_output_watts",                           "Highest output of a power supply."},
};

struct TLabel {
    std::string_view name;
    std::string_view property;
};

// Only properties that do not change by themselves: each value of a label is a series of its own.
constexpr TLabel infoLabels[] = {
    {"name", "Name"}, {"description", "Description"}, {"device_id", "DeviceID"}, {"tag", "Tag"},
    {"mount_point", "Root"}, {"file_system_type", "FileSystemType"}, {"manufacturer", "Manufacturer"},
    {"machine_type", "MachineType"}, {"model", "Model"}, {"part_number", "PartNumber"},
    {"memory_type", "MemoryType"}, {"form_factor", "FormFactor"}, {"version", "Version"},
    {"firmware_version", "FirmwareVersion"}, {"release_date", "ReleaseDate"},
    {"kernel_release", "KernelRelease"}, {"os_name", "OSName"}, {"os_version", "OSVersion"},
    {"host_name", "HostName"}, {"driver", "Driver"}, {"serial_number", "SerialNumber"},
    {"uuid", "SystemBoardUUID"}, {"permanent_address", "PermanentAddress"},
};

struct TScale {
    EUnit unit;
    double toBaseUnit;
};

constexpr TScale scales[] = {
    {EUnit::memoryBytes, 1}, {EUnit::storageBytes, 1}, {EUnit::storageKilobytes, 1000},
    {EUnit::kibibytes, 1024}, {EUnit::bitsPerSecond, 1.0 / 8}, {EUnit::megahertz, 1e6},
    {EUnit::megatransfers, 1e6}, {EUnit::milliwatts, 1e-3}, {EUnit::milliwattHours, 3.6},
    {EUnit::millivolts, 1e-3},
};
// clang-format on

double GetScale(EUnit unit, const TResource& resource) {
    if (unit == EUnit::blocks) {
        return static_cast<double>(ParseNumber<std::uint64_t>(resource.GetText("BlockSize")).value_or(0));
    }
    const auto* const row = std::ranges::find(scales, unit, &TScale::unit);
    return row == std::end(scales) ? 1 : row->toBaseUnit;
}

// Returns the number in its base unit; nullopt if there is none, or if it is 0, which means unknown.
std::optional<double> FindNumber(const TGauge& gauge, const TResource& resource) {
    const auto number = ParseNumber<std::uint64_t>(resource.GetText(gauge.property));
    const TMeaning* const meaning = FindMeaning(gauge.type, gauge.property);
    const double scale = meaning == nullptr ? 1 : GetScale(meaning->unit, resource);
    return number && *number != 0 && scale != 0 ? std::optional(static_cast<double>(*number) * scale)
                                                : std::nullopt;
}

std::string FormatNumber(double number) {
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.begin(), buffer.end(), number, std::chars_format::fixed).ptr;
    return {buffer.data(), end};
}

std::string Escape(std::string_view text) {
    std::string escaped;
    for (const char c : ReplaceNul(MakeWellFormed(text))) {
        if (c == '\\' || c == '"') {
            escaped += '\\';
        }
        escaped += c == '\n' ? std::string_view("\\n") : std::string_view(&c, 1);
    }
    return escaped;
}

// Returns the part of metric names for a type: "memory_module" for PhysicalMemory.
std::string MakeNoun(const TResourceType* type) {
    std::string noun = type == nullptr ? "resource" : NVORHOST::ToLowerCase(type->singular);
    std::ranges::replace_if(
        noun, [](char c) { return !NVORHOST::IsAlphanumeric(c); }, '_');
    return noun;
}

class TLabels {
  public:
    void Add(std::string_view name, std::string_view value) {
        if (!value.empty()) {
            text_ += (text_.empty() ? "" : ",") + std::string(name) + "=\"" + Escape(value) + '"';
        }
    }
    const std::string& GetText() const { return text_; }

  private:
    std::string text_;
};

class TOpenMetricsWriter final : public IInventoryFormat {
  public:
    explicit TOpenMetricsWriter(std::ostream& out) : out_(out) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}

    void AddResource(TResource&& resource) override {
        const TShownColumns& columns = GetShownColumns(resource.type);
        if (columns.IsShown() && !IsEmptyPlace(columns, resource)) {
            const std::string noun = MakeNoun(FindResourceType(resource.type));
            AddInfo(noun, resource);
            AddStatus(noun, resource);
        }
        for (const TGauge& gauge : gauges) {
            if (gauge.type == resource.type) {
                AddGauge(gauge, resource);
            }
        }
    }

    void Finish() override {
        for (const auto& [name, family] : families_) {
            out_ << "# HELP " << name << ' ' << family.help << "\n# TYPE " << name << " gauge\n";
            for (const auto& [labels, value] : family.samples) {
                out_ << name << '{' << labels << "} " << value << '\n';
            }
        }
        out_ << "# EOF\n";
    }

  private:
    struct TFamily {
        std::string help;
        std::map<std::string, std::string> samples;  // values by labels
    };

    static TLabels Identify(const TResource& resource) {
        TLabels labels;
        labels.Add("resource_id", resource.id);
        return labels;
    }

    static TLabels IdentifyAndName(const TResource& resource) {
        TLabels labels = Identify(resource);
        labels.Add("name", resource.GetText("Name"));
        return labels;
    }

    void AddInfo(const std::string& noun, const TResource& resource) {
        TLabels labels = Identify(resource);
        labels.Add("resource_type", resource.type);
        for (const TLabel& label : infoLabels) {
            if (const TProperty* const property = resource.Find(label.property)) {
                labels.Add(label.name, ShowValue(resource.type, *property));
            }
        }
        AddSample("noxinfo_" + noun + "_info", "Identity of a resource of the inventory.", labels, "1");
    }

    void AddStatus(const std::string& noun, const TResource& resource) {
        const TProperty* const status = resource.Find("OperationalStatus");
        if (status == nullptr || status->values.empty()) {
            return;
        }
        TLabels labels = IdentifyAndName(resource);
        labels.Add("status", ShowValue(resource.type, *status));
        AddSample("noxinfo_" + noun + "_operational_status", "State of a resource, in its label.", labels,
                  "1");
    }

    void AddGauge(const TGauge& gauge, const TResource& resource) {
        if (const auto number = FindNumber(gauge, resource)) {
            AddSample(std::string(gauge.name), gauge.help, IdentifyAndName(resource), FormatNumber(*number));
        }
    }

    // Of two samples with the same labels, which would be one series, only the first is kept.
    void AddSample(const std::string& name, std::string_view help, const TLabels& labels,
                   const std::string& value) {
        TFamily& family = families_[name];
        family.help = help;
        if (family.samples.emplace(labels.GetText(), value).second) {
            bytes_ += name.size() + labels.GetText().size() + value.size();
        }
        if (bytes_ > maxBytes) {
            NVORHOST::ThrowAt({source_, {}, {}, {}}, "has more than 16 MiB of metrics");
        }
    }

    std::ostream& out_;
    std::string source_;
    std::map<std::string, TFamily> families_;
    std::size_t bytes_ = 0;
};

}  // namespace

std::span<const TGauge> GetGauges() {
    return gauges;
}

std::unique_ptr<IInventoryFormat> MakeOpenMetricsWriter(std::ostream& out) {
    return std::make_unique<TOpenMetricsWriter>(out);
}

}  // namespace NINVENTORY
