#include "tests/fleet/report/memory_site.h"

#include "fleet/report/site_paths.h"

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <filesystem>
#include <memory>
#include <set>

namespace NFLEET {
namespace {

using TDocument = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

TDocument ParsePage(const std::string& page) {
    return {xmlReadMemory(page.data(), static_cast<int>(page.size()), "page", nullptr,
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
            &xmlFreeDoc};
}

// Returns the values of the attributes that an expression selects.
std::vector<std::string> Select(xmlDoc* document, const char* expression) {
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document), &xmlXPathFreeContext);
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> found(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression), context.get()),
        &xmlXPathFreeObject);
    std::vector<std::string> values;
    for (int i = 0; found->nodesetval != nullptr && i < found->nodesetval->nodeNr; ++i) {
        xmlChar* const text = xmlNodeGetContent(found->nodesetval->nodeTab[i]);
        values.emplace_back(reinterpret_cast<const char*>(text));
        xmlFree(text);
    }
    return values;
}

class TSiteCheck {
  public:
    explicit TSiteCheck(const TMemorySite& site) : site_(site) {
        for (const auto& [path, page] : site.GetFiles()) {
            ReadIds(path, page);
        }
    }

    std::vector<std::string> Run() {
        for (const auto& [path, page] : site_.GetFiles()) {
            CheckPage(path, page);
        }
        return problems_;
    }

  private:
    void ReadIds(const std::string& path, const std::string& page) {
        const TDocument document = ParsePage(page);
        if (document != nullptr) {
            const auto ids = Select(document.get(), "//@id");
            ids_[path] = std::set<std::string>(ids.begin(), ids.end());
            if (ids_[path].size() != ids.size()) {
                problems_.push_back(path + ": an id appears twice");
            }
        }
    }

    void CheckPage(const std::string& path, const std::string& page) {
        const TDocument document = ParsePage(page);
        if (document == nullptr) {
            problems_.push_back(path + ": is not well-formed");
            return;
        }
        if (!IsSitePath(path)) {
            problems_.push_back(path + ": is not a path of a site");
        }
        for (const std::string& link : Select(document.get(), "//@href")) {
            CheckLink(path, link);
        }
        for (const std::string& value :
             Select(document.get(), "//@style | //@src | //@*[starts-with(name(), 'on')]")) {
            problems_.push_back(path + ": has the attribute value " + value);
        }
    }

    void CheckLink(const std::string& path, const std::string& link) {
        const std::size_t hash = link.find('#');
        const std::string file = link.substr(0, hash);
        const std::string target =
            file.empty() ? path
                         : (std::filesystem::path(path).parent_path() / file).lexically_normal().string();
        if (!site_.GetFiles().contains(target)) {
            problems_.push_back(path + ": leads to " + link + ", which does not exist");
        } else if (hash != std::string::npos && !ids_[target].contains(link.substr(hash + 1))) {
            problems_.push_back(path + ": leads to " + link + ", whose element does not exist");
        }
    }

    const TMemorySite& site_;
    std::map<std::string, std::set<std::string>> ids_;
    std::vector<std::string> problems_;
};

}  // namespace

void TMemorySite::Write(const std::string& path, std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    files_[path] = bytes;
    order_.push_back(path);
}

std::string TMemorySite::Get(const std::string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? std::string() : found->second;
}

std::vector<std::string> FindProblems(const TMemorySite& site) {
    return TSiteCheck(site).Run();
}

}  // namespace NFLEET
