#include "bench/made_fleet.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string_view>

namespace {

constexpr unsigned modelCount = 20;

std::string_view GetAttribute(std::string_view line, std::string_view name) {
    const std::string start = std::string(name) + "=\"";
    const std::size_t at = line.find(start);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = line.substr(at + start.size());
    return rest.substr(0, rest.find('"'));
}

bool IsStorage(std::string_view type) {
    return type == "DiskDrive" || type == "DiskPartition" || type == "LogicalVolume";
}

std::string Format(const char* format, unsigned first, unsigned second) {
    char text[64];
    const int length = std::snprintf(text, sizeof(text), format, first, second);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace

TMadeFleet::TMadeFleet(const std::string& document) {
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        AddLine(line + "\n");
    }
    // Neighbouring texts are one piece.
    std::vector<TPiece> joined;
    for (TPiece& piece : pieces_) {
        if (piece.kind == EKind::text && !joined.empty() && joined.back().kind == EKind::text) {
            joined.back().text += piece.text;
        } else {
            joined.push_back(std::move(piece));
        }
    }
    pieces_ = std::move(joined);
}

void TMadeFleet::AddLine(const std::string& line) {
    constexpr std::string_view idStart = "<ResourceInstance resourceId=\"";
    constexpr std::size_t idLength = 32;
    if (const std::size_t at = line.find("timestamp= \""); at != std::string::npos) {
        pieces_.push_back({EKind::text, line.substr(0, at) + "timestamp= \""});
        pieces_.push_back({EKind::timestamp, ""});
        pieces_.push_back({EKind::text, "\">\n"});
        return;
    }
    if (line == "<ResourceCollectionContext>\n") {
        pieces_.push_back({EKind::text, line});
        return AddServer();
    }
    if (line.starts_with(idStart)) {
        type_ = GetAttribute(line, "resourceType");
        ++resources_;
        // Resources without a key share an identifier in the document; those of a machine are different.
        const std::string id = Format("%016X%016X", resources_, 0);
        pieces_.push_back({EKind::text, std::string(idStart)});
        pieces_.push_back({IsStorage(type_) ? EKind::identifier : EKind::text, id});
        pieces_.push_back({EKind::text, line.substr(idStart.size() + idLength)});
        return;
    }
    if (line.starts_with("<Property")) {
        property_ = GetAttribute(line, "name");
    } else if (line.starts_with("<Value>")) {
        if (property_ == "FreePhysicalMemory" || property_ == "FreeVirtualMemory" ||
            property_ == "NumberOfProcesses") {
            return AddValue(EKind::counter, line);
        }
        if (type_ == "DiskDrive" && property_ == "DeviceID" && !hasDisk_) {
            hasDisk_ = true;
            return AddValue(EKind::disk, line);
        }
        if (property_ == "SerialNumber" || property_ == "UniqueID" ||
            (IsStorage(type_) && property_ == "DeviceID")) {
            return AddValue(EKind::identity, line);
        }
        if (property_ == "Model" || (property_ == "Description" && resources_ % 3 == 0)) {
            return AddValue(EKind::model, line);
        }
    }
    pieces_.push_back({EKind::text, line});
}

void TMadeFleet::AddServer() {
    pieces_.push_back(
        {EKind::text, "<ResourceInstance resourceId=\"" + Format("%016X%016X", 0, 0) +
                          "\" resourceType=\"Server\">\n<Property name=\"Model\" type=\"string\">\n"});
    AddValue(EKind::model, "<Value>Server</Value>\n");
    AddValue(EKind::uuid,
             "</Property>\n<Property name=\"SystemBoardUUID\" type=\"string\">\n<Value></Value>\n");
    pieces_.push_back({EKind::text, "</Property>\n</ResourceInstance>\n"});
}

void TMadeFleet::AddValue(EKind kind, const std::string& line) {
    const std::size_t end = line.find("</Value>");
    pieces_.push_back({EKind::text, kind == EKind::counter ? "<Value>" : line.substr(0, end)});
    pieces_.push_back({kind, ""});
    pieces_.push_back({EKind::text, line.substr(end)});
}

std::string TMadeFleet::MakeDocument(unsigned machine, unsigned day) const {
    constexpr unsigned machinesOfChange = 50;
    const bool hasOtherDisk = day > 0 && machine % machinesOfChange < day;
    std::string document;
    for (const TPiece& piece : pieces_) {
        switch (piece.kind) {
            case EKind::text:
                document += piece.text;
                break;
            case EKind::timestamp:
                document += Format("2024-03-%02uT%02u:00:00+01:00", 1 + day, machine % 24);
                break;
            case EKind::identifier:
                document += piece.text.substr(0, 16) + Format("%08X%08X", machine * 2654435761U, machine);
                break;
            case EKind::uuid:
                document += Format("%08X-0042-3510-8052-%012X", machine * 2654435761U, machine);
                break;
            case EKind::identity:
                document += Format("-%u", machine, 0);
                break;
            case EKind::disk:
                document += Format("-%u-%u", machine, hasOtherDisk ? 1 : 0);
                break;
            case EKind::counter:
                document += Format("%u", (machine * 7919U + day * 104729U) % 9999991U, 0);
                break;
            case EKind::model:
                document += Format("-%u", machine % modelCount, 0);
                break;
        }
    }
    return document;
}
