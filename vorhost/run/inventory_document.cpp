#include "vorhost/run/inventory_document.h"

#include "gzstream/gzstreams.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/run/xml_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

// Every element is on a line of its own, and no value contains a line end.
constexpr std::string_view instanceStart = "<ResourceInstance ";
constexpr std::string_view typeAttribute = "resourceType=\"";
constexpr std::string_view documentEnd = "</ResourceCollection>";

std::optional<std::string> FindResourceType(std::string_view line) {
    if (!line.starts_with(instanceStart)) {
        return std::nullopt;
    }
    // The last occurrence: earlier attribute values may be unescaped and contain the same text.
    const std::size_t attribute = line.rfind(typeAttribute);
    if (attribute == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view value = line.substr(attribute + typeAttribute.size());
    return std::string(value.substr(0, value.find('"')));
}

void RecordFault(const TXmlCheck& check, const std::string& line, TInventoryDocument& document) {
    constexpr std::size_t bytesBefore = 20;
    constexpr std::size_t bytesAfter = 20;
    const auto fault = check.FindFault();
    if (fault && !document.fault) {
        const std::size_t begin = fault->offset - std::min(fault->offset, bytesBefore);
        document.fault = {fault->line, line.substr(begin, fault->offset - begin + bytesAfter)};
    }
}

[[noreturn]] void Fail(const std::string& fileName, int error) {
    throw TRunFailure("cannot read " + fileName + ": " + std::generic_category().message(error));
}

// Attaches a duplicate of the descriptor, because the stream closes its descriptor.
void Attach(gzifstream& stream, const TFileDescriptor& file, const std::string& fileName) {
    TFileDescriptor duplicate(file.IsOpen() ? ::fcntl(file.Get(), F_DUPFD_CLOEXEC, 0) : -1);
    if (!duplicate.IsOpen()) {
        Fail(fileName, errno);
    }
    stream.attach(duplicate.Get(), std::ios::in | std::ios::binary);
    if (stream) {
        (void)duplicate.Release();
    }
}

}  // namespace

TInventoryDocument ReadInventoryDocument(const TFileDescriptor& file, const std::string& fileName) {
    TInventoryDocument document;
    document.fileName = fileName;
    gzifstream stream;
    Attach(stream, file, fileName);
    errno = 0;
    std::string line;
    std::string last;
    TXmlCheck check;
    while (std::getline(stream, line)) {
        check.AddLine(line);
        RecordFault(check, line, document);
        if (const auto type = FindResourceType(line)) {
            ++document.resources[*type];
        }
        last.swap(line);
    }
    // Only closing checks the trailer of the compressed data.
    document.isComplete = stream.rdbuf()->close() != nullptr && last == documentEnd;
    if (!document.isComplete && errno != 0) {
        Fail(fileName, errno);
    }
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0) {
        Fail(fileName, errno);
    }
    document.sizeBytes = static_cast<std::uintmax_t>(status.st_size);
    return document;
}

std::string ReadCompressedDocument(const TFileDescriptor& file, const std::string& fileName) {
    std::string bytes;
    std::array<char, 65536> part{};
    for (;;) {
        const ssize_t count = ::pread(file.Get(), part.data(), part.size(), static_cast<off_t>(bytes.size()));
        if (count == 0) {
            return bytes;
        }
        if (count < 0 && errno != EINTR) {
            Fail(fileName, errno);
        }
        bytes.append(part.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

}  // namespace NVORHOST
