#include "inventory/write/document_format.h"

#include "documents/document_error.h"
#include "inventory/write/document_writer.h"

#include <optional>
#include <utility>

namespace NINVENTORY {
namespace {

class TDocumentFormat final : public IInventoryFormat {
  public:
    explicit TDocumentFormat(std::ostream& out) : out_(out) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override {
        EndDocument();
        if (head.kind == EDocument::collection) {
            NVORHOST::ThrowAt({source_, {}, {}, {}},
                              "is not a document; only documents can be written as xml");
        }
        writer_.emplace(out_);
        writer_->BeginDocument(head);
    }
    void BeginList(std::string_view listType, int line) override { writer_->BeginList(listType, line); }
    void AddResource(TResource&& resource) override { writer_->AddResource(std::move(resource)); }
    void Finish() override { EndDocument(); }

  private:
    void EndDocument() {
        if (writer_) {
            writer_->Finish();
        }
        writer_.reset();
    }

    std::ostream& out_;
    std::string source_;
    std::optional<TDocumentWriter> writer_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeDocumentFormat(std::ostream& out) {
    return std::make_unique<TDocumentFormat>(out);
}

}  // namespace NINVENTORY
