#include "fleet/report/site_paths.h"

#include "fleet/ask/moment.h"
#include "text/ascii.h"

#include <algorithm>
#include <chrono>

namespace NFLEET {
namespace {

constexpr std::size_t modelDigits = 16;
constexpr std::size_t dateLength = 10;
constexpr std::size_t folderDigits = 2;

// The folders of a site and the pages at its top, without the numbers of further pages.
constexpr std::string_view folders[] = {"m", "models", "changes", "parts"};
constexpr std::string_view pages[] = {"index",    "search",   "models", "changes",
                                      "machines", "outliers", "stale",  "duplicates"};

std::string ToDigits(const TDigest& digest) {
    return NVORHOST::ToLowerCase(ToText(digest));
}

bool IsWordOrHyphen(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

}  // namespace

TDay GetDay(TSeconds moment) {
    return std::chrono::floor<std::chrono::days>(std::chrono::seconds(moment)).count();
}

std::string FormatDay(TDay day) {
    constexpr TSeconds secondsOfDay = 86400;
    return FormatMoment(day * secondsOfDay).substr(0, dateLength);
}

std::string GetMachinePath(const TMachineId& machine) {
    const std::string digits = ToDigits(machine);
    return "m/" + digits.substr(0, folderDigits) + "/" + digits + ".html";
}

std::string GetModelPath(std::string_view model) {
    return "models/" + ToDigits(MakeDigest(model)).substr(0, modelDigits) + ".html";
}

std::string GetDayPath(TDay day) {
    return "changes/" + FormatDay(day) + ".html";
}

std::string GetNumberedPath(std::string_view firstPath, std::size_t number) {
    if (number == 0) {
        return std::string(firstPath);
    }
    const std::size_t stem = firstPath.rfind('.');
    return std::string(firstPath.substr(0, stem)) + "-" + std::to_string(number + 1) +
           std::string(firstPath.substr(stem));
}

NINVENTORY::TPageLink MakeLink(std::string_view from, std::string_view to, std::string_view id) {
    std::string path;
    for (std::ptrdiff_t up = std::ranges::count(from, '/'); up > 0; --up) {
        path += "../";
    }
    return NINVENTORY::TPageLink(path.append(to), id);
}

bool IsSitePath(std::string_view path) {
    constexpr std::string_view extension = ".html";
    if (!path.ends_with(extension)) {
        return false;
    }
    path.remove_suffix(extension.size());
    const std::size_t name = path.rfind('/');
    const std::string_view file = name == std::string_view::npos ? path : path.substr(name + 1);
    if (file.empty() || !std::ranges::all_of(file, IsWordOrHyphen)) {
        return false;
    }
    if (name == std::string_view::npos) {
        return std::ranges::any_of(pages, [&](std::string_view page) {
            return file == page || (file.starts_with(page) && file[page.size()] == '-');
        });
    }
    const std::string_view folder = path.substr(0, name);
    const bool isOfMachines = folder.size() == 2 + folderDigits && folder.starts_with("m/") &&
                              std::ranges::all_of(folder.substr(2), IsWordOrHyphen);
    return isOfMachines || (folder != "m" && std::ranges::find(folders, folder) != std::end(folders));
}

}  // namespace NFLEET
