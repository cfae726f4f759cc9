#include "inventory/write/json_writer.h"

#include "inventory/write/json_values.h"

#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

void WriteResource(TJsonOutput& json, const TResource& resource) {
    WriteJsonText(json, "resourceId");
    WriteJsonText(json, resource.id);
    WriteJsonText(json, "resourceType");
    WriteJsonText(json, resource.type);
    if (!resource.name.empty()) {
        WriteJsonText(json, "resourceName");
        WriteJsonText(json, resource.name);
    }
    WriteJsonProperties(json, resource);
}

void WriteHead(TJsonOutput& json, const std::string& source, const TDocumentHead& head) {
    WriteJsonText(json, "source");
    WriteJsonText(json, source);
    WriteJsonText(json, "kind");
    WriteJsonText(json, NameJsonKind(head.kind));
    if (!head.timestamp.empty()) {
        WriteJsonText(json, "timestamp");
        WriteJsonText(json, head.timestamp);
    }
}

class TJsonWriter final : public IInventoryFormat {
  public:
    explicit TJsonWriter(std::ostream& out) : out_(out) { out_ << "{\"documents\":["; }

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override {
        EndDocument();
        std::string_view object = objects_.Make([&](TJsonOutput& json) { WriteHead(json, source_, head); });
        object.remove_suffix(1);  // the list of resources is its last member
        out_ << (isFirst_ ? "\n" : ",\n") << object << ",\"resources\":[";
        isFirst_ = false;
        isOpen_ = true;
        separator_ = "\n";
    }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        out_ << separator_ << objects_.Make([&](TJsonOutput& json) { WriteResource(json, resource); });
        separator_ = ",\n";
    }
    void Finish() override {
        EndDocument();
        out_ << "\n]}\n";
    }

  private:
    void EndDocument() {
        out_ << (isOpen_ ? "\n]}" : "");
        isOpen_ = false;
    }

    std::ostream& out_;
    TJsonObjects objects_;
    std::string source_;
    std::string_view separator_;
    bool isFirst_ = true;
    bool isOpen_ = false;
};

class TNdjsonWriter final : public IInventoryFormat {
  public:
    explicit TNdjsonWriter(std::ostream& out) : out_(out) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override { head_ = head; }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override {
        out_ << objects_.Make([&](TJsonOutput& json) {
            WriteHead(json, source_, head_);
            WriteResource(json, resource);
        }) << '\n';
    }
    void Finish() override {}

  private:
    std::ostream& out_;
    TJsonObjects objects_;
    std::string source_;
    TDocumentHead head_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeJsonWriter(std::ostream& out) {
    return std::make_unique<TJsonWriter>(out);
}

std::unique_ptr<IInventoryFormat> MakeNdjsonWriter(std::ostream& out) {
    return std::make_unique<TNdjsonWriter>(out);
}

}  // namespace NINVENTORY
