// Hardware documents of made-up machines, in the form in which this project writes them.
#pragma once

#include "fleet/load/load.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

inline constexpr TSeconds firstOfMarch = 1709290800;  // 2024-03-01T12:00:00+01:00

/// Returns a property with one value, which must be escaped.
inline std::string MakeProperty(std::string_view name, std::string_view value,
                                std::string_view type = "string") {
    return std::string("<Property name=\"")
        .append(name)
        .append("\" type=\"")
        .append(type)
        .append("\">\n<Value>")
        .append(value)
        .append("</Value>\n</Property>\n");
}

inline std::string MakeResource(std::string_view id, std::string_view type, std::string_view properties) {
    return std::string("<ResourceInstance resourceId=\"")
        .append(id)
        .append("\" resourceType=\"")
        .append(type)
        .append("\">\n")
        .append(properties)
        .append("</ResourceInstance>\n");
}

/// Returns 32 digits that end in a number.
inline std::string MakeId(unsigned number) {
    const std::string digits = std::to_string(number);
    return std::string(32 - digits.size(), '0') + digits;
}

inline std::string MakeDisk(const std::string& serial, const std::string& model = "SM600") {
    return MakeResource(ToText(MakeDigest("disk " + serial)), "DiskDrive",
                        MakeProperty("Name", model) + MakeProperty("DeviceID", serial) +
                            MakeProperty("MountCount", "7", "unsignedLong"));
}

inline std::string MakeServer(const std::string& uuid, const std::string& serial) {
    return MakeResource(MakeId(1), "Server",
                        MakeProperty("Manufacturer", "Example Servers") +
                            MakeProperty("MachineType", "7915") + MakeProperty("Model", "X3G") +
                            (serial.empty() ? "" : MakeProperty("SerialNumber", serial)) +
                            MakeProperty("SystemBoardUUID", uuid));
}

inline std::string WrapDocument(const std::string& timestamp, const std::string& context,
                                const std::string& devices) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection "
           "xmlns=\"http://www.kelsg.example/xmlns/prod/SystemsManagement/v2.0/ResourceCollection\" "
           "timestamp= \"" +
           timestamp + "\">\n<ResourceCollectionContext>\n" + context +
           "</ResourceCollectionContext>\n<ResourceList resourceType=\"LogicalDevice\">\n" + devices +
           "</ResourceList>\n</ResourceCollection>\n";
}

inline constexpr char webUuid[] = "4C4C4544-0042-3510-8052-B4C04F4A3132";
inline constexpr char webKey[] = "uuid:4C4C4544-0042-3510-8052-B4C04F4A3132 serial:WEB1";
inline constexpr char dbUuid[] = "C3D2F100-A5B4-4796-8879-6A5B4C3D2E1F";
inline constexpr char dbKey[] = "uuid:C3D2F100-A5B4-4796-8879-6A5B4C3D2E1F serial:DB1";

/// Returns the time of a day in March 2024.
inline std::string MakeTime(int day) {
    return std::string("2024-03-") + (day < 10 ? "0" : "") + std::to_string(day) + "T12:00:00+01:00";
}

inline std::string MakeWeb(int day, const std::string& disks) {
    return WrapDocument(MakeTime(day), MakeServer(webUuid, "WEB1"), disks);
}

inline std::string MakeDb(int day, const std::string& disks) {
    return WrapDocument(MakeTime(day), MakeServer(dbUuid, "DB1"), disks);
}

inline std::string MakeSystemInformation(int day, const std::string& serial, const std::string& host) {
    const std::string id = "66F2E0A640684D33CA84CB95C92247D4";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ResourceCollection "
           "xmlns=\"http://www.kelsg.example/xmlns/prod/SystemsManagement/v2.0/ResourceCollection\" "
           "timestamp=\"" +
           MakeTime(day) +
           "\">\n<ResourceCollectionCriteria criteriaName=\"NOXSystemInfo\" "
           "criteriaId=\"default.NOXSystemInfo\">\n"
           "<ResourceListCriteria resourceType=\"NOXSystemInfo\" />\n</ResourceCollectionCriteria>\n"
           "<ResourceCollectionContext>\n<ResourceInstance resourceName=\"NOXSystemInfo_ContextName\""
           " resourceId=\"NOXSystemInfo_Context_ID_1\" resourceType=\"NOXSystemInfo_Type\">\n"
           "<Property name=\"NOXSystemInfo_Name\" type=\"string\">\n<Value>SystemInfo</Value>\n</Property>\n"
           "</ResourceInstance>\n</ResourceCollectionContext>\n<ResourceList "
           "resourceType=\"NOXSystemInfo\">\n"
           "<ResourceInstance resourceId=\"" +
           id + "\" resourceName=\"Example Servers,7915-X3G-" + serial +
           "\" resourceType=\"NOXSystemInfo\">\n" + MakeProperty("Manufacturer", "Example Servers") +
           MakeProperty("MachineType", "7915") + MakeProperty("Model", "X3G") +
           MakeProperty("SerialNumber", serial) + MakeProperty("OSType", "linux") +
           MakeProperty("OSName", "Linux") + MakeProperty("OSVersion", "12") +
           MakeProperty("SystemName", host) + MakeProperty("HostName", host) +
           MakeProperty("NoxVersion", "1.0.0") + MakeProperty("ProductName", "KEL Vorcheck") +
           "</ResourceInstance>\n</ResourceList>\n</ResourceCollection>\n";
}

/// A directory that is removed with everything in it.
class TLoadFolder {
  public:
    TLoadFolder() {
        std::string path = (std::filesystem::temp_directory_path() / "noxinfo-load-XXXXXX").string();
        path_ = ::mkdtemp(path.data());
    }
    ~TLoadFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TLoadFolder(const TLoadFolder&) = delete;
    TLoadFolder& operator=(const TLoadFolder&) = delete;

    std::string GetPath(const std::string& name = "") const { return (path_ / name).string(); }

    /// Writes a file and the directories that it needs; returns its path.
    std::string Write(const std::string& name, const std::string& text) const {
        const std::filesystem::path path = path_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }

  private:
    std::filesystem::path path_;
};

/// Records what a load reports.
class TRecordedLoad final : public ILoadEvents {
  public:
    void Progress(const TLoadCount& count) override { last = count; }
    void SetAside(std::string_view path, std::string_view reason) override {
        (void)path;  // the reason begins with it
        setAside.emplace_back(reason);
    }
    void Warn(std::string_view message) override { warnings.emplace_back(message); }

    TLoadCount last;
    std::vector<std::string> setAside;
    std::vector<std::string> warnings;
};

}  // namespace NFLEET
