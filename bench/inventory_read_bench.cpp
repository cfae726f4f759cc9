// Compares reading a hardware document of 50 MB, and turning it into NDJSON, with a bare parse of libxml2,
// which passes its events to functions that do nothing.
#include "bench/inventory_workload.h"
#include "bench/ratio.h"
#include "inventory/read/document_reader.h"
#include "inventory/write/json_writer.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <cstdlib>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

namespace NINVENTORY {
namespace {

constexpr std::size_t documentSize = 50'000'000;

const std::string& Document() {
    static const std::string document = [] {
        std::ostringstream out;
        TNOXXMLWriterImpl(out).WriteNamespace(MakeInventory(UnitsForDocument(documentSize)));
        return std::move(out).str();
    }();
    return document;
}

struct TNoEvents final : IDocumentEvents {
    void BeginDocument(const TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& /*resource*/) override { ++resources; }

    std::size_t resources = 0;
};

// Counts the bytes that are written to it.
class TCountingBuffer final : public std::streambuf {
  public:
    std::size_t GetCount() const { return count_; }

  protected:
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override {
        count_ += static_cast<std::size_t>(count);
        return count;
    }
    int_type overflow(int_type c) override {
        ++count_;
        return traits_type::not_eof(c);
    }

  private:
    std::size_t count_ = 0;
};

void ReadOnly() {
    TDocumentInput input("document", Document());
    TNoEvents events;
    ReadDocument(input, events);
    if (events.resources == 0) {
        std::abort();
    }
}

void WriteNdjson() {
    TDocumentInput input("document", Document());
    TCountingBuffer buffer;
    std::ostream out(&buffer);
    const auto writer = MakeNdjsonWriter(out);
    ReadDocument(input, *writer);
    writer->Finish();
    if (buffer.GetCount() == 0) {
        std::abort();
    }
}

void ParseWithLibxml2() {
    xmlSAXHandler handlers{};
    handlers.initialized = XML_SAX2_MAGIC;
    handlers.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**,
                                 int, int, const xmlChar**) {};
    handlers.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
    handlers.characters = [](void*, const xmlChar*, int) {};
    handlers.ignorableWhitespace = handlers.characters;
    const std::string& document = Document();
    if (xmlSAXUserParseMemory(&handlers, nullptr, document.data(), static_cast<int>(document.size())) != 0) {
        std::abort();
    }
}

// Measures `own` and the bare parse alternately.
template <typename TOwn>
void CompareWithBareParse(benchmark::State& state, TOwn own, const char* ratioName) {
    TBestTime ownTime;
    TBestTime parseTime;
    Document();
    for (auto iteration : state) {
        const double seconds = CpuSeconds(own);
        ownTime.Add(seconds);
        parseTime.Add(CpuSeconds(ParseWithLibxml2));
        state.SetIterationTime(seconds);
    }
    state.counters["document_MB"] = static_cast<double>(Document().size()) / 1e6;
    state.counters["parse_ms"] = parseTime.GetSeconds() * 1e3;
    state.counters["own_ms"] = ownTime.GetSeconds() * 1e3;
    state.counters[ratioName] = ownTime.GetSeconds() / parseTime.GetSeconds();
}

void ReadAgainstBareParse(benchmark::State& state) {
    CompareWithBareParse(state, ReadOnly, "read/parse");
}

void NdjsonAgainstBareParse(benchmark::State& state) {
    CompareWithBareParse(state, WriteNdjson, "ndjson/parse");
}

constexpr int rounds = 7;
BENCHMARK(ReadAgainstBareParse)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);
BENCHMARK(NdjsonAgainstBareParse)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace NINVENTORY
