#include "machine/replay/capture_answers.h"

#include "text/find_row.h"
#include "text/hex.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>

namespace NVORHOST {
namespace {

bool IsPlain(char c) {
    return c > ' ' && c <= '~' && c != '%';
}

std::string Escape(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (IsPlain(c)) {
            escaped += c;
        } else {
            escaped += "%" + ToHexDigits(static_cast<std::uint8_t>(c), 2);
        }
    }
    return escaped;
}

std::string Unescape(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const bool isEscape = text.front() == '%' && text.size() >= 3;
        const auto byte = isEscape ? ParseHex(text.substr(1, 2)) : std::nullopt;
        plain += byte ? byte->front() : text.front();
        text.remove_prefix(byte ? 3 : 1);
    }
    return plain;
}

std::string FormatAddress(const std::string& bytes) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    const int family = bytes.size() == sizeof(in_addr) ? AF_INET : AF_INET6;
    return inet_ntop(family, bytes.data(), text.data(), text.size()) == nullptr ? "" : text.data();
}

std::optional<std::string> ParseAddress(const std::string& text) {
    std::string bytes(sizeof(in6_addr), '\0');
    if (inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1) {
        return bytes;
    }
    bytes.resize(sizeof(in_addr));
    return inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ? std::optional(bytes) : std::nullopt;
}

struct TAccessName {
    EAccess access;
    std::string_view name;
};

constexpr TAccessName accessNames[] = {
    {EAccess::read, "read"},
    {EAccess::list, "list"},
    {EAccess::readLink, "read-link"},
    {EAccess::exists, "exists"},
};

struct TStatusName {
    EReadStatus status;
    std::string_view name;
};

constexpr TStatusName statusNames[] = {
    {EReadStatus::notFound, "not-found"}, {EReadStatus::denied, "denied"}, {EReadStatus::failed, "failed"},
    {EReadStatus::timedOut, "timed-out"}, {EReadStatus::asleep, "asleep"},
};

void Write(std::string_view name, const std::optional<std::string>& value, std::string& text) {
    if (value) {
        text += std::string(name) + " " + Escape(*value) + "\n";
    }
}

void Write(std::string_view name, const std::optional<std::uint32_t>& value, std::string& text) {
    if (value) {
        text += std::string(name) + " " + std::to_string(*value) + "\n";
    }
}

void Read(std::string_view words, std::optional<std::string>& value) {
    value = Unescape(words);
}

void Read(std::string_view words, std::optional<std::uint32_t>& value) {
    value = ParseNumber<std::uint32_t>(words);
}

constexpr std::string_view offsetLine = "UtcOffsetMinutes";
constexpr std::string_view addressesLine = "InterfaceAddresses";
constexpr std::string_view addressLine = "InterfaceAddress";
constexpr std::string_view spaceLine = "FileSystemSpace";

// Calls `visit` with the name and the member of every answer that is a single word.
template <typename TAnswers, typename TVisit>
void ForEachWordAnswer(TAnswers& answers, TVisit&& visit) {
    visit("LocalTime", answers.localTime);
    visit("KernelRelease", answers.kernelRelease);
    visit("NodeName", answers.nodeName);
    visit("Architecture", answers.architecture);
    visit("HypervisorSignature", answers.hypervisorSignature);
    visit("PageSizeBytes", answers.pageSizeBytes);
    visit("ClockTicksPerSecond", answers.clockTicksPerSecond);
}

std::string FormatRefusal(const TPathAccess& access, EReadStatus status) {
    const auto* const accessRow = FindRow(accessNames, &TAccessName::access, access.access);
    const auto* const statusRow = FindRow(statusNames, &TStatusName::status, status);
    return std::string(statusRow->name) + " " + std::string(accessRow->name) + " " + Escape(access.path) +
           "\n";
}

void ReadAddress(std::string_view words, TCaptureAnswers& answers) {
    const std::string interface = Unescape(TakeUntil(words, ' '));
    auto address = ParseAddress(std::string(words));
    if (answers.interfaceAddresses && address) {
        answers.interfaceAddresses->push_back(
            {interface.empty() ? std::nullopt : std::optional(interface), std::move(*address)});
    }
}

void ReadOffset(std::string_view words, TCaptureAnswers& answers) {
    const auto moment = ParseNumber<std::int64_t>(TakeUntil(words, ' '));
    const auto offset = ParseNumber<int>(words);
    if (moment && offset) {
        answers.utcOffsetMinutes[*moment] = *offset;
    }
}

void ReadSpace(std::string_view words, TCaptureAnswers& answers) {
    std::string mountPoint = Unescape(TakeUntil(words, ' '));
    const auto blockSize = ParseNumber<std::uint64_t>(TakeUntil(words, ' '));
    const auto size = ParseNumber<std::uint64_t>(TakeUntil(words, ' '));
    const auto available = ParseNumber<std::uint64_t>(words);
    if (blockSize && size && available) {
        answers.fileSystemSpaces[std::move(mountPoint)] = {*blockSize, *size, *available};
    }
}

void ReadRefusal(std::string_view statusName, std::string_view words, TCaptureAnswers& answers) {
    const auto* const status = FindRow(statusNames, &TStatusName::name, statusName);
    const auto* const access = FindRow(accessNames, &TAccessName::name, TakeUntil(words, ' '));
    if (status != nullptr && access != nullptr) {
        answers.refusals[{access->access, Unescape(words)}] = status->status;
    }
}

void ReadLine(std::string_view line, TCaptureAnswers& answers) {
    const std::string_view name = TakeUntil(line, ' ');
    ForEachWordAnswer(answers, [&](std::string_view answer, auto& member) {
        if (answer == name) {
            Read(line, member);
        }
    });
    if (name == offsetLine) {
        ReadOffset(line, answers);
    } else if (name == addressesLine) {
        answers.interfaceAddresses.emplace();
    } else if (name == addressLine) {
        ReadAddress(line, answers);
    } else if (name == spaceLine) {
        ReadSpace(line, answers);
    } else {
        ReadRefusal(name, line, answers);
    }
}

}  // namespace

std::string FormatCaptureAnswers(const TCaptureAnswers& answers) {
    std::string text = "# Answers of the captured machine beside its files.\n";
    ForEachWordAnswer(answers, [&](std::string_view name, const auto& member) { Write(name, member, text); });
    for (const auto& [moment, offset] : answers.utcOffsetMinutes) {
        text += std::string(offsetLine) + " " + std::to_string(moment) + " " + std::to_string(offset) + "\n";
    }
    if (answers.interfaceAddresses) {
        text += std::string(addressesLine) + "\n";
        for (const TInterfaceAddress& row : *answers.interfaceAddresses) {
            text += std::string(addressLine) + " " + Escape(row.interface.value_or("")) + " " +
                    FormatAddress(row.address) + "\n";
        }
    }
    for (const auto& [mountPoint, space] : answers.fileSystemSpaces) {
        text += std::string(spaceLine) + " " + Escape(mountPoint) + " " +
                std::to_string(space.blockSizeBytes) + " " + std::to_string(space.sizeBytes) + " " +
                std::to_string(space.availableBytes) + "\n";
    }
    for (const auto& [access, status] : answers.refusals) {
        text += FormatRefusal(access, status);
    }
    return text;
}

void MergeCaptureAnswers(const TCaptureAnswers& more, TCaptureAnswers& answers) {
    const auto take = [](const auto& from, auto& to) {
        if (from) {
            to = from;
        }
    };
    take(more.localTime, answers.localTime);
    take(more.kernelRelease, answers.kernelRelease);
    take(more.nodeName, answers.nodeName);
    take(more.architecture, answers.architecture);
    take(more.hypervisorSignature, answers.hypervisorSignature);
    take(more.pageSizeBytes, answers.pageSizeBytes);
    take(more.clockTicksPerSecond, answers.clockTicksPerSecond);
    take(more.interfaceAddresses, answers.interfaceAddresses);
    answers.utcOffsetMinutes.insert(more.utcOffsetMinutes.begin(), more.utcOffsetMinutes.end());
    for (const auto& [mountPoint, space] : more.fileSystemSpaces) {
        answers.fileSystemSpaces[mountPoint] = space;
    }
    answers.refusals.insert(more.refusals.begin(), more.refusals.end());
}

TCaptureAnswers ParseCaptureAnswers(std::string_view text) {
    TCaptureAnswers answers;
    ForEachLine(text, [&answers](std::string_view line) { ReadLine(line, answers); });
    return answers;
}

TReadResult<TCaptureAnswers> ReadCaptureAnswers(const ISystemFiles& files) {
    const auto text = files.ReadText(captureAnswersPath);
    return {text.status, ParseCaptureAnswers(text.value), text.error};
}

}  // namespace NVORHOST
