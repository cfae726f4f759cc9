// The texts of a page are those of the inventory: every property of every resource that a page lists is
// compared with the JSON of the same source.
#include "inventory/write/shown_columns.h"
#include "tests/program/program_run.h"

#include <gtest/gtest.h>
#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

/// A resource as a page or JSON describes it, with the names and texts of its properties in their order.
struct TDescribed {
    std::string id;
    std::vector<std::pair<std::string, std::string>> properties;
};

/// A resource of the JSON, with the words of its coded properties, which are empty for others.
struct TJsonResource {
    std::string type;
    TDescribed texts;
    std::vector<std::string> words;
};

std::string Show(const std::string& format, const std::string& source, const std::string& directory) {
    const auto result = RunNoxinfo({{"show", "--format", format, source}, directory, {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return result.standardOutput;
}

struct TFree {
    void operator()(xmlDoc* page) const { xmlFreeDoc(page); }
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    void operator()(xmlXPathObject* found) const { xmlXPathFreeObject(found); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};

std::string GetText(xmlNode* node) {
    const std::unique_ptr<xmlChar, TFree> text(xmlNodeGetContent(node));
    return reinterpret_cast<const char*>(text.get());
}

TDescribed DescribeList(xmlNode* list) {
    std::vector<std::string> texts;
    for (xmlNode* item = list->children; item != nullptr; item = item->next) {
        if (item->type == XML_ELEMENT_NODE) {
            texts.push_back(GetText(item));
        }
    }
    TDescribed resource;
    for (std::size_t i = 2; i + 1 < texts.size(); i += 2) {
        resource.properties.emplace_back(texts[i], texts[i + 1]);
    }
    resource.id = texts.size() < 2 ? "" : texts[1];
    return resource;
}

std::vector<TDescribed> ListResourcesOfPage(const std::string& page) {
    const std::unique_ptr<xmlDoc, TFree> tree(
        htmlReadMemory(page.data(), static_cast<int>(page.size()), "page.html", "UTF-8",
                       HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET));
    const std::unique_ptr<xmlXPathContext, TFree> context(xmlXPathNewContext(tree.get()));
    const auto* const lists = reinterpret_cast<const xmlChar*>("//dl[dt[1] = 'resource identifier']");
    const std::unique_ptr<xmlXPathObject, TFree> found(xmlXPathEvalExpression(lists, context.get()));
    const std::span<xmlNode* const> nodes(found->nodesetval->nodeTab,
                                          static_cast<std::size_t>(found->nodesetval->nodeNr));
    std::vector<TDescribed> resources;
    std::ranges::transform(nodes, std::back_inserter(resources), DescribeList);
    return resources;
}

// Numbers were parsed as strings, so that their digits stay as they are.
std::string ToText(const rapidjson::Value& value) {
    if (value.IsArray()) {
        std::string joined;
        for (const rapidjson::Value& element : value.GetArray()) {
            joined += (joined.empty() ? "" : ", ") + ToText(element);
        }
        return joined;
    }
    return value.IsString() ? value.GetString() : value.IsBool() ? (value.GetBool() ? "true" : "false") : "";
}

// Returns "" unless every code has a word.
std::string FindWords(const rapidjson::Value& property) {
    if (property.HasMember("word")) {
        return ToText(property["word"]);
    }
    if (!property.HasMember("words")) {
        return {};
    }
    const auto words = property["words"].GetArray();
    const bool isComplete =
        std::all_of(words.begin(), words.end(), [](const rapidjson::Value& word) { return word.IsString(); });
    return isComplete ? ToText(property["words"]) : std::string();
}

std::vector<TJsonResource> ListResourcesOfJson(const std::string& text) {
    rapidjson::Document json;
    json.Parse<rapidjson::kParseNumbersAsStringsFlag>(text.c_str());
    std::vector<TJsonResource> resources;
    for (const rapidjson::Value& document : json["documents"].GetArray()) {
        for (const rapidjson::Value& each : document["resources"].GetArray()) {
            TJsonResource resource{
                each["resourceType"].GetString(), {each["resourceId"].GetString(), {}}, {}};
            const rapidjson::Value& properties = each["properties"];
            std::for_each(properties.MemberBegin(), properties.MemberEnd(), [&](const auto& property) {
                resource.texts.properties.emplace_back(property.name.GetString(),
                                                       ToText(property.value["value"]));
                resource.words.push_back(FindWords(property.value));
            });
            resources.push_back(std::move(resource));
        }
    }
    return resources;
}

// A page has the resources of one type after another, in the order in which the types occur first.
std::vector<TJsonResource> SortLikePage(const std::vector<TJsonResource>& resources) {
    std::vector<std::string> types;
    for (const TJsonResource& resource : resources) {
        const bool isShown = NINVENTORY::GetShownColumns(resource.type).IsShown();
        if (isShown && std::ranges::find(types, resource.type) == types.end()) {
            types.push_back(resource.type);
        }
    }
    std::vector<TJsonResource> sorted;
    for (const std::string& type : types) {
        std::ranges::copy_if(resources, std::back_inserter(sorted),
                             [&](const TJsonResource& each) { return each.type == type; });
    }
    return sorted;
}

// A page adds the text of the source in parentheses where it shows a rounded value or a word.
void ExpectText(const std::string& shown, const std::string& text, const std::string& words) {
    const std::string added = " (" + text + ")";
    if (!words.empty() && words != text) {
        EXPECT_EQ(shown, words + added);
    } else if (text.empty()) {
        EXPECT_EQ(shown, "unknown");
    } else if (shown != text) {
        ASSERT_GT(shown.size(), added.size()) << shown;
        EXPECT_EQ(shown.substr(shown.size() - added.size()), added) << shown;
    }
}

void ExpectPageLikeJson(const std::string& source, const std::string& directory) {
    const auto shown = ListResourcesOfPage(Show("html", source, directory));
    const auto expected = SortLikePage(ListResourcesOfJson(Show("json", source, directory)));
    ASSERT_FALSE(expected.empty());
    ASSERT_EQ(shown.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& [type, texts, words] = expected[i];
        SCOPED_TRACE(type + " " + texts.id);
        EXPECT_EQ(shown[i].id, texts.id);
        ASSERT_EQ(shown[i].properties.size(), texts.properties.size());
        for (std::size_t j = 0; j < texts.properties.size(); ++j) {
            EXPECT_EQ(shown[i].properties[j].first, texts.properties[j].first);
            ExpectText(shown[i].properties[j].second, texts.properties[j].second, words[j]);
        }
    }
}

TEST(PageTexts, AreThoseOfTheDocumentsOfEveryMachine) {
    for (const auto& entry : fs::directory_iterator(NOXINFO_MACHINES)) {
        if (entry.is_directory()) {
            SCOPED_TRACE(entry.path().string());
            ExpectPageLikeJson(entry.path().filename().string(), NOXINFO_MACHINES);
        }
    }
}

TEST(PageTexts, AreThoseOfANamespace) {
    ExpectPageLikeJson("rack-server.xml", (fs::path(NOXINFO_REPORTS) / "data").string());
}

}  // namespace
}  // namespace NVORHOST
