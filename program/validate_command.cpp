#include "program/validate_command.h"

#include "documents/document_error.h"
#include "inventory/check/problem_writer.h"
#include "inventory/check/validator.h"
#include "program/inventory_source.h"
#include "vorhost/run/exit_status.h"

#include <memory>

namespace NVORHOST {
namespace {

using NINVENTORY::TProblem;
using NINVENTORY::TValidator;

// Checks each document of a source by itself.
class TDocumentsCheck final : public NINVENTORY::IDocumentEvents {
  public:
    /// All must outlive this object; `source` is the name of the current source.
    TDocumentsCheck(const std::string& source, const TValidator::TReport& report)
        : source_(source), report_(report) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& head) override {
        Finish();
        if (head.kind == NINVENTORY::EDocument::collection) {
            ThrowAt({source_, {}, {}, {}}, "is not a document; only documents can be validated");
        }
        validator_ = std::make_unique<TValidator>(report_);
        validator_->BeginDocument(head);
    }
    void BeginList(std::string_view listType, int line) override { validator_->BeginList(listType, line); }
    void AddResource(NINVENTORY::TResource&& resource) override {
        validator_->AddResource(std::move(resource));
    }
    void Finish() {
        if (validator_ != nullptr) {
            validator_->Finish();
        }
        validator_.reset();
    }

  private:
    const std::string& source_;
    const TValidator::TReport& report_;
    std::unique_ptr<TValidator> validator_;
};

}  // namespace

int RunValidate(const TValidateOptions& options, std::ostream& out) {
    const auto writer = options.isJson ? NINVENTORY::MakeProblemJson(out) : NINVENTORY::MakeProblemLines(out);
    bool isValid = true;
    std::string source;
    const TValidator::TReport report = [&](const TProblem& problem) {
        isValid = false;
        writer->Add(source, problem);
    };
    for (const std::string& path : options.sources) {
        TDocumentsCheck check(source, report);
        try {
            PassInventory(
                path,
                [&](const std::string& name) {
                    check.Finish();
                    source = name;
                },
                check);
            check.Finish();
        } catch (const TDocumentError& error) {
            isValid = false;
            const TDocumentPlace& place = error.GetPlace();
            writer->Add(place.file.value_or(path), {place.line.value_or(0), {}, error.GetCause()});
        }
    }
    writer->Finish();
    return isValid ? eExitDone : eExitFailed;
}

}  // namespace NVORHOST
