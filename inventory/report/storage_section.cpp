#include "inventory/report/storage_section.h"

#include "inventory/model/shown_value.h"
#include "inventory/report/report_tables.h"
#include "text/numbers.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

constexpr int barWidth = 1000;  // units of the picture for the largest extent
constexpr int barHeight = 24;

std::optional<std::uint64_t> Multiply(std::optional<std::uint64_t> one, std::optional<std::uint64_t> other) {
    if (!one || !other || (*other != 0 && *one > UINT64_MAX / *other)) {
        return std::nullopt;
    }
    return *one * *other;
}

std::optional<std::uint64_t> GetNumber(const TResource& resource, std::string_view property) {
    return ParseNumber<std::uint64_t>(resource.GetText(property));
}

std::string ShowSize(const TResource& extent) {
    const auto size = GetSize(extent);
    return size ? ShowDecimal(*size, "B") : "size unknown";
}

bool IsLogicalPartition(const TResource& partition) {
    return partition.GetText("PartitionType") == "3";
}

bool IsExtendedPartition(const TResource& partition) {
    return partition.GetText("PartitionType") == "2";
}

TResources ListPartitions(const TReportInventory& inventory, const TResource& extent) {
    TResources parts = inventory.GetDependents(extent, "BasedOn");
    std::erase_if(parts, [](const TResource* part) { return part->type != "DiskPartition"; });
    return parts;
}

// Draws the extent and its partitions. The largest extent has the whole width; the width of the others is
// by the square root of their size, so that a small disk next to large ones can still be seen.
class TBar {
  public:
    TBar(THtmlWriter& html, std::uint64_t size, std::uint64_t largest)
        : html_(html), size_(static_cast<double>(size)) {
        const double share = largest == 0 ? 0 : std::sqrt(size_ / static_cast<double>(largest));
        width_ = std::max(static_cast<int>(share * barWidth), 8);
    }

    // An extent without partitions that holds a volume or a file system is filled.
    void Draw(const TResources& partitions, bool holdsContent, std::string_view title) {
        const auto svg = html_.Element("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                                               {"viewBox", "0 0 1000 24"},
                                               {"preserveAspectRatio", "none"},
                                               {"class", "bar"},
                                               {"role", "img"}});
        html_.Leaf("title", title);
        Rectangle(partitions.empty() && holdsContent ? "part" : "hole", 0, width_, 0);
        double at = 0;
        for (const TResource* const partition : partitions) {
            if (!IsLogicalPartition(*partition)) {
                const double length = ToLength(*partition);
                Rectangle(IsExtendedPartition(*partition) ? "hole" : "part", at, length, 1);
                if (IsExtendedPartition(*partition)) {
                    DrawLogical(partitions, at);
                }
                at += length;
            }
        }
        Rectangle("edge", 0, width_, 0);
    }

  private:
    void DrawLogical(const TResources& partitions, double at) {
        for (const TResource* const partition : partitions) {
            if (IsLogicalPartition(*partition)) {
                Rectangle("part", at, ToLength(*partition), 4);
                at += ToLength(*partition);
            }
        }
    }
    double ToLength(const TResource& partition) const {
        return size_ == 0 ? 0 : static_cast<double>(GetSize(partition).value_or(0)) / size_ * width_;
    }
    void Rectangle(std::string_view kind, double x, double width, int inset) {
        constexpr double thinnest = 2;
        html_.Void("rect", {{"class", kind},
                            {"x", static_cast<int>(x)},
                            {"y", inset},
                            {"width", static_cast<int>(std::max(width, thinnest))},
                            {"height", barHeight - 2 * inset}});
    }

    THtmlWriter& html_;
    double size_;
    int width_;
};

// Writes the extents of an inventory as lists.
class TStorage {
  public:
    // The arguments must outlive this object.
    TStorage(THtmlWriter& html, const TReportInventory& inventory)
        : html_(html),
          inventory_(inventory),
          disks_(inventory.GetAll("DiskDrive")),
          volumes_(inventory.GetAll("LogicalVolume")) {
        for (const TResources* const extents : {&disks_, &volumes_}) {
            for (const TResource* const extent : *extents) {
                largest_ = std::max(largest_, GetSize(*extent).value_or(0));
                ids_.emplace(extent, std::to_string(ids_.size() + 1));
            }
        }
    }

    void Write() {
        html_.Leaf(
            "p", {{"class", "quiet"}},
            "Bars of larger disks and volumes are longer, by the square root of the size. Within a bar, "
            "partitions are to scale, from left to right as listed; the rest has no recorded one.");
        WriteExtents("Disks", disks_);
        WriteExtents("Volumes", volumes_);
        WriteLoosePartitions();
    }

  private:
    std::string GetId(const TResource& extent) const {
        return inventory_.GetIdPrefix() + "extent-" + ids_.at(&extent);
    }

    // Disks of one model differ only in their identity.
    static std::string GetLinkText(const TResource& extent) {
        const std::string identity = Show(extent, "DeviceID");
        return extent.type == "LogicalVolume" || identity.empty() ? GetShownName(extent) : identity;
    }

    void WriteExtents(std::string_view title, const TResources& extents) {
        if (extents.empty()) {
            return;
        }
        html_.Leaf("h3", title);
        const auto list = html_.Element("ul", {{"class", "extents"}});
        for (const TResource* const extent : extents) {
            const auto item = html_.Element("li", {{"id", GetId(*extent)}});
            WriteExtent(*extent);
        }
    }

    void WriteExtent(const TResource& extent) {
        {
            const auto line = html_.Element("p");
            WriteName(extent);
            html_.Text(" ");
            html_.Value(ShowSize(extent));
            WriteRest(extent);
            WriteIdentity(extent);
        }
        const TResources partitions = ListPartitions(inventory_, extent);
        DrawBar(extent, partitions);
        WriteParts(partitions);
    }

    void WriteIdentity(const TResource& extent) {
        if (const std::string identity = Show(extent, "DeviceID");
            extent.type != "LogicalVolume" && !identity.empty()) {
            html_.Text(", ");
            const auto code = html_.Element("code");
            html_.Value(identity);
        }
    }

    void WriteName(const TResource& extent) {
        const auto name = html_.Element("b");
        html_.Value(GetShownName(extent));
    }

    // Kind, state, what the extent is based on, and what it holds without partitions.
    void WriteRest(const TResource& extent) {
        for (const std::string_view property : {"Description", "OperationalStatus"}) {
            if (const std::string text = Show(extent, property); !text.empty()) {
                html_.Text(", ");
                html_.Value(text);
            }
        }
        WriteNames(", based on ", inventory_.GetAntecedents(extent, "BasedOn"));
        WriteContent(extent);
    }

    void WriteNames(std::string_view introduction, const TResources& extents) {
        for (std::size_t i = 0; i < extents.size(); ++i) {
            html_.Text(i == 0 ? introduction : ", ");
            if (!ids_.contains(extents[i])) {
                html_.Value(GetShownName(*extents[i]));
            } else {
                const auto link = html_.Link(GetId(*extents[i]));
                html_.Value(GetLinkText(*extents[i]));
            }
        }
    }

    void WriteContent(const TResource& extent) {
        TResources volumes = inventory_.GetDependents(extent, "BasedOn");
        std::erase_if(volumes, [](const TResource* each) { return each->type == "DiskPartition"; });
        WriteNames(", holds ", volumes);
        for (const TResource* const fileSystem : inventory_.GetDependents(extent, "ResidesOnExtent")) {
            WriteFileSystem(*fileSystem);
        }
    }

    void WriteFileSystem(const TResource& fileSystem) {
        html_.Text(", mounted on ");
        html_.Value(GetShownName(fileSystem));
        if (const std::string type = Show(fileSystem, "FileSystemType"); !type.empty()) {
            html_.Text(" as ");
            html_.Value(type);
        }
        if (const auto free = GetNumber(fileSystem, "AvailableSpace")) {
            html_.Text(", " + ShowDecimal(*free, "B") + " free");
        }
    }

    // True if a volume or a file system is on the extent itself.
    bool HoldsContent(const TResource& extent) const {
        const TResources dependents = inventory_.GetDependents(extent, "BasedOn");
        return !inventory_.GetDependents(extent, "ResidesOnExtent").empty() ||
               std::ranges::any_of(dependents,
                                   [](const TResource* each) { return each->type != "DiskPartition"; });
    }

    void DrawBar(const TResource& extent, const TResources& partitions) {
        const auto size = GetSize(extent);
        if (!size || *size == 0) {
            return;
        }
        double used = 0;
        for (const TResource* const partition : partitions) {
            used += IsLogicalPartition(*partition) ? 0 : static_cast<double>(GetSize(*partition).value_or(0));
        }
        // Partitions that do not fit are in the list only.
        TBar(html_, *size, largest_)
            .Draw(used > static_cast<double>(*size) ? TResources() : partitions, HoldsContent(extent),
                  partitions.empty() ? "No partitions recorded"
                                     : std::to_string(partitions.size()) + " partitions");
    }

    void WriteParts(const TResources& partitions) {
        if (partitions.empty()) {
            return;
        }
        const auto list = html_.Element("ol", {{"class", "parts"}});
        for (const TResource* const partition : partitions) {
            const auto item = html_.Element("li");
            WriteName(*partition);
            html_.Text(" ");
            html_.Value(ShowSize(*partition));
            WriteContent(*partition);
        }
    }

    void WriteLoosePartitions() {
        TResources partitions = inventory_.GetAll("DiskPartition");
        std::erase_if(partitions, [this](const TResource* each) {
            return !inventory_.GetAntecedents(*each, "BasedOn").empty();
        });
        if (!partitions.empty()) {
            html_.Leaf("h3", "Partitions whose disk the source does not record");
            WriteParts(partitions);
        }
    }

    THtmlWriter& html_;
    const TReportInventory& inventory_;
    TResources disks_, volumes_;
    std::map<const TResource*, std::string> ids_;
    std::uint64_t largest_ = 0;
};

}  // namespace

std::optional<std::uint64_t> GetSize(const TResource& extent) {
    constexpr std::uint64_t bytesPerKilobyte = 1000;
    if (extent.Find("MaxMediaSize") != nullptr) {
        return Multiply(GetNumber(extent, "MaxMediaSize"), bytesPerKilobyte);
    }
    for (const std::string_view property : {"PartitionSize", "FileSystemSize"}) {
        if (extent.Find(property) != nullptr) {
            return GetNumber(extent, property);
        }
    }
    return Multiply(GetNumber(extent, "NumberOfBlocks"), GetNumber(extent, "BlockSize"));
}

bool HasStorage(const TReportInventory& inventory) {
    return std::ranges::any_of(inventory.GetResources(), [](const TResource& each) {
        return each.type == "DiskDrive" || each.type == "LogicalVolume" || each.type == "DiskPartition";
    });
}

void WriteStorage(THtmlWriter& html, const TReportInventory& inventory) {
    TStorage(html, inventory).Write();
}

}  // namespace NINVENTORY
