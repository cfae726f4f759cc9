#include "vorhost/cimxml/parse.h"

#include "documents/document_file.h"
#include "documents/xml_parser.h"
#include "vorhost/cimxml/namespace_reader.h"

#include <utility>

namespace NVORHOST {
namespace {

// Does not merge classes: existing instances may conflict with the declarations of the document.
void MoveClasses(const std::string& name, TMemoryNamespace&& loaded, TMemoryNamespace& target) {
    for (const auto& each : loaded.GetClasses()) {
        if (target.FindClass(each->GetName()) != nullptr) {
            ThrowAt({name, {}, each->GetName(), {}}, "the namespace already has this class");
        }
    }
    target.TakeClasses(std::move(loaded));
}

// `feed` receives the parser and passes the whole document to it.
template <typename TFeed>
void Load(const std::string& name, TMemoryNamespace& target, const TFeed& feed) {
    TMemoryNamespace loaded;
    TNamespaceReader reader(loaded);
    TXmlParser parser(reader);
    try {
        feed(parser);
        parser.Finish();
    } catch (const TDocumentCause& cause) {
        TDocumentPlace place = reader.GetPlace();
        place.file = name;
        if (const int line = parser.GetLine(); line > 0) {
            place.line = line;
        }
        ThrowAt(place, cause.what());
    }
    MoveClasses(name, std::move(loaded), target);
}

}  // namespace

void LoadNamespaceFromText(const std::string& name, std::string_view text, TMemoryNamespace& target) {
    Load(name, target, [text](TXmlParser& parser) { parser.Feed(text); });
}

void LoadNamespaceFromFile(const std::string& path, TMemoryNamespace& target) {
    TDocumentFile file(path);
    Load(path, target, [&file](TXmlParser& parser) {
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            parser.Feed(bytes);
        }
    });
}

}  // namespace NVORHOST
