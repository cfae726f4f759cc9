#include "inventory/read/system_information_reader.h"

#include "documents/document_error.h"
#include "inventory/model/resource_id.h"
#include "inventory/read/system_information_frame.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

namespace NINVENTORY {
namespace {

using NVORHOST::Quote;
using NVORHOST::TDocumentCause;

// Row order is document order.
constexpr std::array<std::string_view, 11> propertyNames = {
    "Manufacturer", "MachineType", "Model",    "SerialNumber", "OSType",      "OSName",
    "OSVersion",    "SystemName",  "HostName", "NoxVersion",   "ProductName",
};

constexpr std::string_view listStart = "<ResourceList resourceType=\"NOXSystemInfo\">\n";
constexpr std::string_view afterName = "\" resourceType=\"NOXSystemInfo\">\n";
constexpr std::string_view valueStart = "<Value>";
constexpr std::string_view valueEnd = "</Value>\n</Property>\n";
constexpr std::string_view nullEnd = "</Property>\n";
constexpr std::string_view documentEnd = "</ResourceInstance>\n</ResourceList>\n</ResourceCollection>\n";

using TValues = std::array<std::optional<std::string_view>, propertyNames.size()>;

/// The resource of a document, by one reading of its text.
struct TReading {
    std::string_view id;
    std::string_view name;
    TValues values;

    std::string_view Get(std::string_view property) const {
        const auto row = std::ranges::find(propertyNames, property) - propertyNames.begin();
        return values[static_cast<std::size_t>(row)].value_or("");
    }

    // The resource name and the identifier repeat some of the values.
    bool IsConsistent() const {
        std::string expected(Get("Manufacturer"));
        expected.append(",").append(Get("MachineType")).append("-").append(Get("Model"));
        expected.append("-").append(Get("SerialNumber"));
        return name == expected && Get("SystemName") == Get("HostName") &&
               (id.empty() || id == DigestOf(MakeSystemKey(Get("MachineType"), Get("SerialNumber"))));
    }
};

// Finds the values of the properties by trying every place where one may end.
class TSearch {
  public:
    // `text` begins after `resourceName="`.
    TSearch(std::string_view text, std::string_view id) : text_(text) {
        reading_.id = id;
        for (std::size_t row = 0; row < propertyNames.size(); ++row) {
            starts_[row]
                .append("<Property name=\"")
                .append(propertyNames[row])
                .append("\" type=\"string\">\n");
        }
    }

    // Returns the consistent reading, else the first one; nullopt if there is none.
    std::optional<TReading> Run() {
        const std::string nameEnd = std::string(afterName) + starts_.front();
        for (std::size_t end = text_.find(nameEnd); end != std::string_view::npos;
             end = text_.find(nameEnd, end + 1)) {
            reading_.name = text_.substr(0, end);
            if (ReadValue(0, end + nameEnd.size())) {
                return reading_;
            }
        }
        return first_;
    }

    // The position in the text that no reading came beyond.
    std::size_t GetReached() const { return reached_; }

  private:
    // Ambiguous text is made on purpose, and trying all its readings may take for ever.
    static constexpr std::size_t maxTries = 10'000;

    // Both return true if the rest of the text completes a consistent reading.
    bool ReadValue(std::size_t row, std::size_t at) {
        reached_ = std::max(reached_, at);
        if (++tries_ > maxTries) {
            throw TDocumentCause("the values can be read in too many ways");
        }
        const std::string_view rest = text_.substr(at);
        if (!rest.starts_with(valueStart)) {
            reading_.values[row].reset();
            return rest.starts_with(nullEnd) && Continue(row + 1, at + nullEnd.size());
        }
        const std::size_t begin = at + valueStart.size();
        for (std::size_t end = text_.find(valueEnd, begin); end != std::string_view::npos;
             end = text_.find(valueEnd, end + 1)) {
            reading_.values[row] = text_.substr(begin, end - begin);
            if (Continue(row + 1, end + valueEnd.size())) {
                return true;
            }
        }
        return false;
    }

    bool Continue(std::size_t row, std::size_t at) {
        const std::string_view rest = text_.substr(at);
        if (row < propertyNames.size()) {
            return rest.starts_with(starts_[row]) && ReadValue(row, at + starts_[row].size());
        }
        if (rest != documentEnd) {
            return false;
        }
        if (!first_) {
            first_ = reading_;
        }
        return reading_.IsConsistent();
    }

    std::string_view text_;
    std::array<std::string, propertyNames.size()> starts_;
    TReading reading_;
    std::optional<TReading> first_;
    std::size_t tries_ = 0;
    std::size_t reached_ = 0;
};

TResource MakeResource(const TReading& reading) {
    TResource resource{
        std::string(reading.id), "NOXSystemInfo", "NOXSystemInfo", std::string(reading.name), {}};
    for (std::size_t row = 0; row < propertyNames.size(); ++row) {
        TProperty property{std::string(propertyNames[row]), "string", EShape::null, {}};
        if (reading.values[row]) {
            property.shape = EShape::scalar;
            property.values.emplace_back(*reading.values[row]);
        }
        resource.properties.push_back(std::move(property));
    }
    return resource;
}

}  // namespace

void TSystemInformationReader::Read(IDocumentEvents& events) {
    Expect("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    Expect("<ResourceCollection xmlns=\"");
    TDocumentHead head{EDocument::systemInformation, {}, {}};
    head.namespaceUri = TakeUntil("\"");
    Expect(" timestamp=\"");
    head.timestamp = TakeUntil("\">\n");
    events.BeginDocument(head);
    Expect(systemInformationContext);
    Expect(listStart);
    const int listLine = GetLine() - 1;
    Expect("<ResourceInstance resourceId=\"");
    const int resourceLine = GetLine();
    const std::string_view id = TakeUntil("\" resourceName=\"");
    TSearch search(text_.substr(at_), id);
    const std::optional<TReading> reading = search.Run();
    if (!reading) {
        at_ += search.GetReached();
        throw TDocumentCause(text_.ends_with(documentEnd) ? "malformed system information"
                                                          : "truncated document");
    }
    at_ = text_.size();
    events.BeginList("NOXSystemInfo", listLine);
    TResource resource = MakeResource(*reading);
    resource.line = resourceLine;
    events.AddResource(std::move(resource));
}

int TSystemInformationReader::GetLine() const {
    const std::string_view read = text_.substr(0, at_);
    return static_cast<int>(std::ranges::count(read, '\n')) + 1;
}

void TSystemInformationReader::Expect(std::string_view literal) {
    const std::string_view rest = text_.substr(at_);
    if (!rest.starts_with(literal)) {
        throw TDocumentCause(literal.starts_with(rest)
                                 ? "truncated document"
                                 : "expected " + Quote(literal.substr(0, literal.find('\n'))));
    }
    at_ += literal.size();
}

std::string_view TSystemInformationReader::TakeUntil(std::string_view end) {
    const std::size_t found = text_.find(end, at_);
    if (found == std::string_view::npos) {
        throw TDocumentCause("truncated document");
    }
    const std::string_view taken = text_.substr(at_, found - at_);
    at_ = found + end.size();
    return taken;
}

}  // namespace NINVENTORY
