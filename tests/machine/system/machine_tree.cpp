#include "tests/machine/system/machine_tree.h"

#include <array>
#include <functional>
#include <stdexcept>
#include <vector>

namespace NVORHOST {

namespace {

struct TByteParts {
    std::string bytes;
    std::vector<std::string> texts;
};

[[noreturn]] void Refuse(const std::string& line) {
    throw std::invalid_argument("machine tree: " + line);
}

// Splits a line into pairs of hexadecimal digits and quoted texts.
TByteParts ParseParts(std::string_view line) {
    TByteParts parts;
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] == ' ') {
            ++i;
        } else if (line[i] == '"') {
            const auto end = line.find('"', i + 1);
            if (end == std::string_view::npos) {
                Refuse(std::string(line));
            }
            parts.texts.emplace_back(line.substr(i + 1, end - i - 1));
            parts.bytes += parts.texts.back();
            i = end + 1;
        } else {
            parts.bytes += static_cast<char>(std::stoi(std::string(line.substr(i, 2)), nullptr, 16));
            i += 2;
        }
    }
    return parts;
}

std::pair<std::string, std::string> SplitColon(std::string_view line) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) {
        Refuse(std::string(line));
    }
    return {std::string(line.substr(0, colon)), std::string(line.substr(colon + 1))};
}

std::string JoinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

std::string JoinBytes(const std::vector<std::string>& lines) {
    std::string bytes;
    for (const std::string& line : lines) {
        bytes += ParseByteLine(line);
    }
    return bytes;
}

std::string FillRegisters(std::size_t size, const std::vector<std::string>& lines) {
    std::string bytes(size, '\0');
    for (const std::string& line : lines) {
        const auto [offset, digits] = SplitColon(line);
        const std::string values = ParseByteLine(digits);
        bytes.replace(std::stoul(offset, nullptr, 16), values.size(), values);
    }
    return bytes;
}

std::string JoinStructures(const std::vector<std::string>& lines) {
    std::string table;
    std::uint16_t handle = 0x0100;
    for (const std::string& line : lines) {
        table += MakeSmbiosStructure(line, handle++);
    }
    return table;
}

// Reads "/mount point 4096 1000000 400000": the mount point and the numbers of TFileSystemSpace.
void AddSpace(TFakeSystemCalls& calls, std::string text) {
    std::array<std::uint64_t, 3> numbers{};
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
        const auto blank = text.rfind(' ');
        if (blank == std::string::npos) {
            Refuse(text);
        }
        *number = std::stoull(text.substr(blank + 1));
        text.erase(blank);
    }
    calls.fileSystemSpaces[text] = {numbers[0], numbers[1], numbers[2]};
}

void SetCall(TFakeSystemCalls& calls, std::string_view name, const std::string& value) {
    struct TRow {
        std::string_view name;
        std::function<void()> set;
    };
    const auto number = [&] { return static_cast<std::uint32_t>(std::stoul(value)); };
    const TRow rows[] = {
        {"KernelRelease", [&] { calls.kernelRelease = value; }},
        {"NodeName", [&] { calls.nodeName = value; }},
        {"Architecture", [&] { calls.architecture = value; }},
        {"HypervisorSignature", [&] { calls.hypervisorSignature = value; }},
        {"PageSizeBytes", [&] { calls.pageSizeBytes = number(); }},
        {"ClockTicksPerSecond", [&] { calls.clockTicksPerSecond = number(); }},
        {"UtcOffsetMinutes", [&] { calls.utcOffsetMinutes = std::stoi(value); }},
        {"FileSystemSpace", [&] { AddSpace(calls, value); }},
    };
    for (const TRow& row : rows) {
        if (row.name == name) {
            row.set();
            return;
        }
    }
    Refuse(std::string(name));
}

class TReader {
  public:
    TMachine Read(std::string_view text) {
        while (!text.empty()) {
            const auto end = text.find('\n');
            TakeLine(std::string(text.substr(0, end)));
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
        EndBlock();
        return std::move(machine_);
    }

  private:
    void TakeLine(const std::string& line) {
        if (line.starts_with("|")) {
            blockLines_.push_back(line.size() > 2 ? line.substr(2) : "");
            return;
        }
        EndBlock();
        if (line.empty() || line.starts_with("#")) {
            return;
        }
        if (line.starts_with("@")) {
            const auto equals = line.find(" = ");
            SetCall(machine_.calls, line.substr(1, equals - 1), line.substr(equals + 3));
            return;
        }
        TakeEntry(line);
    }

    void TakeEntry(const std::string& line) {
        if (const auto place = line.find(" -> "); place != std::string::npos) {
            machine_.files.AddLink(line.substr(0, place), line.substr(place + 4));
        } else if (const auto equals = line.find(" = "); equals != std::string::npos) {
            machine_.files.AddFile(line.substr(0, equals), line.substr(equals + 3) + "\n");
        } else if (const auto mark = line.find(" !"); mark != std::string::npos) {
            machine_.files.AddRefusal(line.substr(0, mark), line.substr(mark) == " !denied"
                                                                ? EReadStatus::denied
                                                                : EReadStatus::failed);
        } else if (line.ends_with("/")) {
            machine_.files.AddFolder(line.substr(0, line.size() - 1));
        } else if (line.starts_with("/") && line.ends_with(":")) {
            const auto blank = line.find(' ');
            blockPath_ = line.substr(0, std::min(blank, line.size() - 1));
            blockForm_ = blank == std::string::npos ? "" : line.substr(blank + 1, line.size() - blank - 2);
        } else {
            Refuse(line);
        }
    }

    void EndBlock() {
        if (!blockPath_.empty()) {
            machine_.files.AddFile(blockPath_, MakeBlock());
        } else if (!blockLines_.empty()) {
            Refuse(blockLines_.front());
        }
        blockPath_.clear();
        blockLines_.clear();
    }

    std::string MakeBlock() const {
        constexpr std::string_view registers = "registers ";
        if (blockForm_.empty()) {
            return JoinLines(blockLines_);
        }
        if (blockForm_ == "bytes") {
            return JoinBytes(blockLines_);
        }
        if (blockForm_ == "smbios") {
            return JoinStructures(blockLines_);
        }
        if (blockForm_.starts_with(registers)) {
            return FillRegisters(std::stoul(blockForm_.substr(registers.size())), blockLines_);
        }
        Refuse(blockForm_);
    }

    TMachine machine_;
    std::string blockPath_;
    std::string blockForm_;
    std::vector<std::string> blockLines_;
};

}  // namespace

std::string ParseByteLine(std::string_view line) {
    return ParseParts(line).bytes;
}

std::string MakeSmbiosStructure(std::string_view line, std::uint16_t handle) {
    const auto [type, rest] = SplitColon(line);
    const auto firstText = rest.find('"');
    const std::string fields = ParseByteLine(rest.substr(0, firstText));
    const auto texts = firstText == std::string::npos ? TByteParts{} : ParseParts(rest.substr(firstText));
    std::string structure;
    structure += static_cast<char>(std::stoi(type));
    structure += static_cast<char>(fields.size() + 4);
    structure += static_cast<char>(handle & 0xFF);
    structure += static_cast<char>(handle >> 8);
    structure += fields;
    for (const std::string& text : texts.texts) {
        structure += text + '\0';
    }
    structure.append(texts.texts.empty() ? 2 : 1, '\0');
    return structure;
}

TMachine ParseMachineTree(std::string_view text) {
    return TReader().Read(text);
}

}  // namespace NVORHOST
