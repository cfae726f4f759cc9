// Records what a reader passes on.
#pragma once

#include "inventory/read/document_reader.h"

#include <string>
#include <vector>

namespace NINVENTORY {

class TRecordedEvents final : public IDocumentEvents {
  public:
    void BeginDocument(const TDocumentHead& documentHead) override { head = documentHead; }
    void BeginList(std::string_view listType, int /*line*/) override { lists.emplace_back(listType); }
    void AddResource(TResource&& resource) override { resources.push_back(std::move(resource)); }

    TDocumentHead head;
    std::vector<std::string> lists;
    std::vector<TResource> resources;
};

inline TRecordedEvents ReadText(std::string_view text) {
    TDocumentInput input("document", text);
    TRecordedEvents events;
    ReadDocument(input, events);
    return events;
}

/// Returns the message of the error that reading the text gives; empty if there is none.
inline std::string FindError(std::string_view text) {
    try {
        ReadText(text);
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace NINVENTORY
