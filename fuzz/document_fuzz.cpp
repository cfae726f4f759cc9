// Any bytes are read as a document or refused. A document that was read gives the same resources when it is
// written and read again.
#include "documents/document_error.h"
#include "fuzz.h"
#include "inventory/read/document_reader.h"
#include "inventory/read/hardware_reader.h"
#include "inventory/write/document_writer.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace NINVENTORY;

// Keeps the resources, and writes the document.
class TRecord final : public IDocumentEvents {
  public:
    void BeginDocument(const TDocumentHead& head) override { writer_.BeginDocument(head); }
    void BeginList(std::string_view listType, int line) override { writer_.BeginList(listType, line); }
    void AddResource(TResource&& resource) override {
        resource.line = 0;  // the other document may have other lines
        resources_.push_back(resource);
        writer_.AddResource(std::move(resource));
    }

    std::string Finish() {
        writer_.Finish();
        return out_.str();
    }
    bool HasSameResources(const TRecord& other) const {
        return std::ranges::equal(
            resources_, other.resources_, [](const TResource& left, const TResource& right) {
                return left.id == right.id && left.type == right.type && left.list == right.list &&
                       left.name == right.name && left.properties == right.properties;
            });
    }

  private:
    std::ostringstream out_;
    TDocumentWriter writer_{out_};
    std::vector<TResource> resources_;
};

bool Read(std::string_view bytes, TRecord& record) {
    try {
        TDocumentInput input("fuzz", bytes);
        if (input.GetContent() == EContent::hardware) {
            ReadHardwareDocument(input, record);  // not the module, which the fuzzer does not see
        } else {
            ReadDocument(input, record);
        }
        return true;
    } catch (const NVORHOST::TDocumentError&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TRecord first;
    if (!Read(AsText(data, size), first)) {
        return 0;
    }
    const std::string written = first.Finish();
    TRecord second;
    Require(Read(written, second), "a document that was written can be read");
    Require(first.HasSameResources(second), "writing keeps all resources");
    Require(second.Finish() == written, "writing again gives the same bytes");
    return 0;
}
