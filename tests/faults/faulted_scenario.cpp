#include "faulted_scenario.h"

#include "tests/program/temporary_directory.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <utility>

namespace NTEST {
namespace {

using NVORHOST::TProgramResult;
using NVORHOST::TProgramRun;
using NVORHOST::TTemporaryDirectory;

void Replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

// Removes the text that differs from run to run.
std::string Anonymous(std::string text, const std::string& folder) {
    static const std::regex directory("\\.noxinfo-[\\w.-]+-\\d+-\\d+-\\w{6}");
    static const std::regex plugin("/\\S*\\.pi\\.so");
    Replace(text, folder, "DIR");
    return std::regex_replace(std::regex_replace(text, directory, ".noxinfo-*"), plugin, "PLUGIN");
}

TProgramResult Anonymous(TProgramResult result, const std::string& folder) {
    result.standardOutput = Anonymous(result.standardOutput, folder);
    result.standardOutput.resize(std::min(result.standardOutput.find("Time "), result.standardOutput.size()));
    result.standardError = Anonymous(result.standardError, folder);
    return result;
}

void Fill(const std::string& folder, const TFiles& files) {
    for (const auto& [path, bytes] : files) {
        const std::filesystem::path file = folder + "/" + path;
        std::filesystem::create_directories(file.parent_path());
        NVORHOST::WriteFile(file.string(), bytes);
    }
}

TProgramRun RunIn(const std::string& folder, const TScenario& scenario) {
    TProgramRun run;
    for (std::string argument : scenario.arguments) {
        Replace(argument, "DIR", folder);
        run.arguments.push_back(std::move(argument));
    }
    return run;
}

bool HasFile(const TFiles& files, const std::string& path, const std::string& bytes) {
    const auto found = files.find(path);
    return found != files.end() && found->second == bytes;
}

// Describes how a file differs from the expected one; empty if it does not.
std::string DescribeFile(const std::string& path, const TFiles& actual, const TFiles& before,
                         const TFiles& after) {
    const auto found = actual.find(path);
    if (found == actual.end()) {
        return "; " + path + " is gone";
    }
    if (HasFile(after, path, found->second)) {
        return "; " + path + " is new";
    }
    if (HasFile(before, path, found->second)) {
        return "; " + path + " is as before";
    }
    return before.contains(path) || after.contains(path) ? "; " + path + " is broken" : "; leaves " + path;
}

std::string DescribeFiles(const TFiles& actual, const TFiles& expected, const TFiles& before,
                          const TFiles& after) {
    std::set<std::string> paths;
    for (const TFiles* files : {&actual, &expected}) {
        for (const auto& [path, bytes] : *files) {
            paths.insert(path);
        }
    }
    std::string text;
    for (const std::string& path : paths) {
        const auto found = actual.find(path);
        if (found == actual.end() || !HasFile(expected, path, found->second)) {
            text += DescribeFile(path, actual, before, after);
        }
    }
    return text;
}

std::string DescribeFailure(const TProgramResult& result) {
    const std::string program = "noxinfo: ";
    const std::string& error = result.standardError;
    if (result.status != 1 || !error.starts_with(program) || error.find('\n') != error.size() - 1) {
        return "status " + std::to_string(result.status) + ": " + error;
    }
    return error.substr(program.size(), error.size() - program.size() - 1) +
           (result.standardOutput.empty() ? "" : "; prints a summary");
}

bool IsLike(const TProgramResult& one, const TProgramResult& other) {
    return one.status == other.status && one.standardOutput == other.standardOutput &&
           one.standardError == other.standardError;
}

// Removes the line with that beginning and returns the rest of it; empty if there is none.
std::string TakeLine(std::string& text, const std::string& start) {
    const std::size_t line = text.find("\n" + start);
    if (line == std::string::npos) {
        return {};
    }
    const std::size_t end = text.find('\n', line + 1);
    const std::string rest = text.substr(line + 1 + start.size(), end - line - 1 - start.size());
    text.erase(line, end - line);
    return rest;
}

bool IsInPrivateDirectory(const std::string& path) {
    return path.find(".noxinfo-*") != std::string::npos;
}

}  // namespace

TFiles FilesIn(const std::string& folder) {
    TFiles files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string path = entry.path().lexically_relative(folder).string();
        if (!entry.is_directory()) {
            files[Anonymous(path, folder)] = NVORHOST::ReadFile(entry.path().string());
        } else if (entry.path().filename().string().starts_with('.')) {
            files[Anonymous(path, folder)] = "";
        }
    }
    return files;
}

TFaultedScenario::TFaultedScenario(TScenario scenario) : scenario_(std::move(scenario)) {
    const TTemporaryDirectory folder;
    Fill(folder.GetPath(), scenario_.before);
    result_ = Anonymous(NVORHOST::RunNoxinfo(RunIn(folder.GetPath(), scenario_)), folder.GetPath());
    after_ = FilesIn(folder.GetPath());
}

TFaultedScenario::TOutcome TFaultedScenario::RunWith(const TCallFault& fault) const {
    const TTemporaryDirectory folder;
    Fill(folder.GetPath(), scenario_.before);
    std::string watched = scenario_.watched;
    Replace(watched, "DIR", folder.GetPath());
    const TFaultedRun run = RunWithFault(RunIn(folder.GetPath(), scenario_), fault, watched);
    const TProgramResult result = Anonymous(run.result, folder.GetPath());
    TFiles actual = FilesIn(folder.GetPath());
    const bool isDone = IsLike(result, result_);
    TFiles expected = isDone ? after_ : scenario_.before;
    if (!isDone && !scenario_.log.empty()) {
        expected.erase(scenario_.log);
        actual.erase(scenario_.log);
    }
    return {Anonymous(run.path, folder.GetPath()),
            (isDone ? "done" : DescribeFailure(result)) +
                DescribeFiles(actual, expected, scenario_.before, after_)};
}

std::string TFaultedScenario::DescribeState(const TFiles& actual) const {
    std::size_t oldFiles = 0;
    std::size_t newFiles = 0;
    std::string text;
    for (const auto& [path, bytes] : after_) {
        if (path == scenario_.log || HasFile(scenario_.before, path, bytes)) {
            continue;
        }
        if (HasFile(actual, path, bytes)) {
            ++newFiles;
        } else if (HasFile(scenario_.before, path, actual.contains(path) ? actual.at(path) : "")) {
            ++oldFiles;
        } else {
            text += "; " + path + " is broken";
        }
    }
    for (const auto& [path, bytes] : actual) {
        if (!after_.contains(path) && !IsInPrivateDirectory(path)) {
            text += "; leaves " + path;
        }
    }
    if (newFiles == 0 || oldFiles == 0) {
        return (newFiles == 0 ? "all old" : "all new") + text;
    }
    return "some new" + text;
}

TFaultedScenario::TEnd TFaultedScenario::RunEndedBy(const TCallFault& fault) const {
    const TTemporaryDirectory folder;
    Fill(folder.GetPath(), scenario_.before);
    std::string watched = scenario_.watched;
    Replace(watched, "DIR", folder.GetPath());
    const TFaultedRun run = RunWithFault(RunIn(folder.GetPath(), scenario_), fault, watched);
    const TFiles files = FilesIn(folder.GetPath());
    TEnd end{Anonymous(run.path, folder.GetPath()), run.result.status, DescribeState(files), false, {}, {}};
    end.leavesDirectory =
        std::ranges::any_of(files, [](const auto& file) { return IsInPrivateDirectory(file.first); });
    auto next = Anonymous(NVORHOST::RunNoxinfo(RunIn(folder.GetPath(), scenario_)), folder.GetPath());
    end.completed = TakeLine(next.standardOutput, "Completed   ");
    TFiles left = FilesIn(folder.GetPath());
    TFiles expected = after_;
    left.erase(scenario_.log);
    expected.erase(scenario_.log);
    end.nextRun = (IsLike(next, result_) ? "done" : DescribeFailure(next)) +
                  DescribeFiles(left, expected, scenario_.before, after_);
    return end;
}

}  // namespace NTEST
