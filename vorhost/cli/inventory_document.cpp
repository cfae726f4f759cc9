#include "vorhost/cli/inventory_document.h"

#include "gzstream/gzstreams.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/cli/xml_check.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

// Every element of a document is a line of its own, and no value holds a line end.
constexpr std::string_view instanceStart = "<ResourceInstance ";
constexpr std::string_view typeAttribute = "resourceType=\"";
constexpr std::string_view documentEnd = "</ResourceCollection>";

std::optional<std::string> FindResourceType(std::string_view line) {
    if (!line.starts_with(instanceStart)) {
        return std::nullopt;
    }
    // The last one: values in front of it are not escaped and may hold anything.
    const std::size_t attribute = line.rfind(typeAttribute);
    if (attribute == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view value = line.substr(attribute + typeAttribute.size());
    return std::string(value.substr(0, value.find('"')));
}

void NoteFault(const TXmlCheck& check, const std::string& line, TInventoryDocument& document) {
    constexpr std::size_t bytesBefore = 20;
    constexpr std::size_t bytesAfter = 20;
    const auto fault = check.GetFault();
    if (fault && document.faultyLine == 0) {
        const std::size_t begin = fault->offset - std::min(fault->offset, bytesBefore);
        document.faultyLine = fault->line;
        document.faultyText = line.substr(begin, fault->offset - begin + bytesAfter);
    }
}

}  // namespace

TInventoryDocument ReadInventoryDocument(const std::string& directory, const std::string& fileName) {
    const std::string path = directory + "/" + fileName;
    TInventoryDocument document;
    document.fileName = fileName;
    errno = 0;
    gzifstream stream(path.c_str(), std::ios::in | std::ios::binary);
    std::string line;
    std::string last;
    TXmlCheck check;
    while (std::getline(stream, line)) {
        check.ReadLine(line);
        NoteFault(check, line, document);
        if (const auto type = FindResourceType(line)) {
            ++document.resources[*type];
        }
        last.swap(line);
    }
    // The compressed data has an end of its own, which only closing asks for.
    document.isWhole = stream.rdbuf()->close() != nullptr && last == documentEnd;
    if (!document.isWhole && errno != 0) {
        throw TRunFailure("cannot read " + fileName + ": " + std::generic_category().message(errno));
    }
    std::error_code ignored;
    document.sizeBytes = std::filesystem::file_size(path, ignored);
    return document;
}

}  // namespace NVORHOST
