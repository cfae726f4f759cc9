// Compares rendering a hardware document of 50 MB with compressing its text, and with two XML libraries that
// write the same document. A ratio below 1 means that the writer is faster.
#include "bench/inventory_workload.h"
#include "bench/ratio.h"
#include "host/vor_exception.h"
#include "writer/catalogue/resource_catalogue.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>
#include <libxml/xmlwriter.h>
#include <pugixml.hpp>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t documentSize = 50'000'000;

template <auto release>
struct TRelease {
    template <typename T>
    void operator()(T* held) const {
        release(held);
    }
};
using TXmlDocPtr = std::unique_ptr<xmlDoc, TRelease<xmlFreeDoc>>;
using TXmlBufferPtr = std::unique_ptr<xmlBuffer, TRelease<xmlBufferFree>>;
using TXmlTextWriterPtr = std::unique_ptr<xmlTextWriter, TRelease<xmlFreeTextWriter>>;

std::string Render(const boost::shared_ptr<NVORHOST::TMemoryNamespace>& inventory) {
    std::ostringstream out;
    TNOXXMLWriterImpl(out).WriteNamespace(inventory);
    return std::move(out).str();
}

/// The namespace and its finished document, created once.
struct TWorkload {
    boost::shared_ptr<NVORHOST::TMemoryNamespace> inventory = MakeInventory(UnitsForDocument(documentSize));
    std::string text = Render(inventory);
};

const TWorkload& Workload() {
    static const TWorkload workload;
    return workload;
}

std::size_t ReadValue(NKELVOR20::ICIMInstance& instance, const std::string& name) {
    try {
        const auto property = instance.GetProperty(name, {});
        if (property->IsNull({})) {
            return 0;
        }
        const NKELVOR20::TCIMValue& value = property->GetValue({});
        benchmark::DoNotOptimize(property->GetType({}));
        return value.ToString(10).size();
    } catch (const NKELVOR20::TVORException&) {
        return 0;
    }
}

void RenderDocument() {
    std::ostringstream out;
    TNOXXMLWriterImpl(out).WriteNamespace(Workload().inventory);
    benchmark::DoNotOptimize(out.rdbuf());
}

/// Renders into a stream whose memory was used before, which excludes the time that the system takes to
/// provide 128 MB to a growing stream.
void RenderDocumentAgain() {
    static std::ostringstream out;
    out.str("");
    TNOXXMLWriterImpl(out).WriteNamespace(Workload().inventory);
    benchmark::DoNotOptimize(out.rdbuf());
}

/// Makes the same host calls as rendering and discards the results. One of them, for the property with the
/// name of the resource type, throws.
void CallHost() {
    std::size_t bytes = 0;
    for (const TResourceClass& resourceClass : GetResourceCatalogue()) {
        const auto cimClass = Workload().inventory->FindClass(resourceClass.className);
        if (!cimClass) {
            continue;
        }
        std::vector<std::string> names(1, std::string(resourceClass.keyProperty));
        for (const std::span<const TPropertyRow> rows :
             {std::span<const TPropertyRow>(resourceClass.head), resourceClass.properties}) {
            for (const TPropertyRow& row : rows) {
                names.emplace_back(row.origin == EValueOrigin::instance ? row.sourceName : "NoSuchProperty");
            }
        }
        for (const auto& instance : cimClass->GetInstances()) {
            for (const std::string& name : names) {
                bytes += ReadValue(*instance, name);
            }
        }
    }
    benchmark::DoNotOptimize(bytes);
}

/// Compresses the finished text with one gzwrite at the default level.
void CompressDocument() {
    const std::string& text = Workload().text;
    gzFile file = gzopen("writer_bench.xml.gz", "wb");
    gzwrite(file, text.data(), static_cast<unsigned int>(text.size()));
    gzclose(file);
    std::remove("writer_bench.xml.gz");
}

/// Measures `own` and `other` alternately.
template <typename TOwn, typename TOther>
void Compare(benchmark::State& state, TOwn own, TOther other, const char* ratioName) {
    const double bytes = static_cast<double>(Workload().text.size());
    TBestTime ownTime;
    TBestTime otherTime;
    for (auto iteration : state) {
        const double seconds = CpuSeconds(own);
        ownTime.Add(seconds);
        otherTime.Add(CpuSeconds(other));
        state.SetIterationTime(seconds);
    }
    constexpr double nanosecond = 1e-9;
    state.counters["document_MB"] = bytes / 1e6;
    state.counters["own_ns_per_byte"] = ownTime.GetSeconds() / bytes / nanosecond;
    state.counters["other_ns_per_byte"] = otherTime.GetSeconds() / bytes / nanosecond;
    state.counters[ratioName] = ownTime.GetSeconds() / otherTime.GetSeconds();
}

constexpr unsigned int keepEverything = pugi::parse_full | pugi::parse_ws_pcdata;
constexpr unsigned int unchanged = pugi::format_raw | pugi::format_no_empty_element_tags;

const pugi::xml_document& PugixmlTree() {
    static pugi::xml_document tree;
    if (!tree.first_child()) {
        tree.load_buffer(Workload().text.data(), Workload().text.size(), keepEverything);
    }
    return tree;
}

void SaveWithPugixml(const pugi::xml_document& tree) {
    std::ostringstream out;
    tree.save(out, "", unchanged);
    const auto size = static_cast<std::size_t>(out.tellp());
    // The texts differ by a few bytes: the line end of the declaration and a blank in the root element.
    if (size + 8 < Workload().text.size()) {
        std::abort();
    }
}

void CopyWithPugixml(pugi::xml_node from, pugi::xml_node to) {
    for (const pugi::xml_node child : from) {
        pugi::xml_node copy = to.append_child(child.type());
        copy.set_name(child.name());
        copy.set_value(child.value());
        for (const pugi::xml_attribute attribute : child.attributes()) {
            copy.append_attribute(attribute.name()).set_value(attribute.value());
        }
        CopyWithPugixml(child, copy);
    }
}

void BuildAndSaveWithPugixml() {
    pugi::xml_document tree;
    CopyWithPugixml(PugixmlTree(), tree);
    SaveWithPugixml(tree);
}

xmlDoc* Libxml2Tree() {
    static const TXmlDocPtr tree(xmlReadMemory(
        Workload().text.data(), static_cast<int>(Workload().text.size()), nullptr, nullptr, XML_PARSE_HUGE));
    return tree.get();
}

void SaveWithLibxml2() {
    const TXmlBufferPtr out(xmlBufferCreate());
    xmlSaveCtxt* const context = xmlSaveToBuffer(out.get(), "UTF-8", XML_SAVE_NO_EMPTY);
    xmlSaveDoc(context, Libxml2Tree());
    xmlSaveClose(context);
    if (static_cast<std::size_t>(xmlBufferLength(out.get())) + 8 < Workload().text.size()) {
        std::abort();
    }
}

void WriteChildren(xmlTextWriter* out, const xmlNode* parent) {
    for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE) {
            xmlTextWriterWriteString(out, node->content);
            continue;
        }
        xmlTextWriterStartElement(out, node->name);
        for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
            xmlTextWriterWriteAttribute(out, attribute->name, attribute->children->content);
        }
        WriteChildren(out, node);
        xmlTextWriterFullEndElement(out);
    }
}

/// Uses libxml2's text writer. The existing tree only provides the strings.
void StreamWithLibxml2() {
    const TXmlBufferPtr buffer(xmlBufferCreate());
    {
        const TXmlTextWriterPtr out(xmlNewTextWriterMemory(buffer.get(), 0));
        xmlTextWriterStartDocument(out.get(), nullptr, "UTF-8", nullptr);
        xmlDoc* const tree = Libxml2Tree();
        WriteChildren(out.get(), reinterpret_cast<const xmlNode*>(tree));
        xmlTextWriterEndDocument(out.get());
    }
    benchmark::DoNotOptimize(buffer.get());
}

void RenderAgainstGzip(benchmark::State& state) {
    Compare(state, RenderDocument, CompressDocument, "render/gzip");
}

void RenderAgainAgainstGzip(benchmark::State& state) {
    Compare(state, RenderDocumentAgain, CompressDocument, "render/gzip");
}

/// A lower bound for every writer.
void CallHostAgainstGzip(benchmark::State& state) {
    Compare(state, CallHost, CompressDocument, "host/gzip");
}

/// The library only writes a tree that was built before.
void RenderAgainstPugixmlSave(benchmark::State& state) {
    PugixmlTree();
    Compare(
        state, RenderDocument, [] { SaveWithPugixml(PugixmlTree()); }, "render/save");
}

/// The library builds its tree from existing strings and writes it.
void RenderAgainstPugixmlBuildAndSave(benchmark::State& state) {
    PugixmlTree();
    Compare(state, RenderDocument, BuildAndSaveWithPugixml, "render/build+save");
}

void RenderAgainstLibxml2Save(benchmark::State& state) {
    Libxml2Tree();
    Compare(state, RenderDocument, SaveWithLibxml2, "render/save");
}

void RenderAgainstLibxml2TextWriter(benchmark::State& state) {
    Libxml2Tree();
    Compare(state, RenderDocument, StreamWithLibxml2, "render/textwriter");
}

constexpr int rounds = 5;
BENCHMARK(RenderAgainstGzip)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderAgainAgainstGzip)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(CallHostAgainstGzip)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderAgainstPugixmlSave)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderAgainstPugixmlBuildAndSave)
    ->UseManualTime()
    ->Iterations(rounds)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(RenderAgainstLibxml2Save)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(RenderAgainstLibxml2TextWriter)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);

}  // namespace
