// Compares the diff of two large documents with reading both. The ratio should not grow with the documents,
// as the time to read them is proportional to their size.
#include "bench/inventory_workload.h"
#include "bench/ratio.h"
#include "inventory/compare/comparison.h"
#include "inventory/read/document_reader.h"
#include "inventory/write/diff_text_writer.h"
#include "inventory/write/document_writer.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>

namespace NINVENTORY {
namespace {

struct TNoEvents final : IDocumentEvents {
    void BeginDocument(const TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& /*resource*/) override { ++resources; }

    std::size_t resources = 0;
};

class TRecordedInventory final : public IDocumentEvents {
  public:
    void BeginDocument(const TDocumentHead& head) override { inventory_.documents.push_back(head); }
    void BeginList(std::string_view listType, int /*line*/) override {
        inventory_.types.emplace_back(listType);
    }
    void AddResource(TResource&& resource) override { inventory_.resources.push_back(std::move(resource)); }

    const TInventory& Get() const { return inventory_; }

  private:
    TInventory inventory_;
};

// Writes a document again in which one of 100 resources has another serial number and one is missing.
class TChangedDocument final : public IDocumentEvents {
  public:
    void BeginDocument(const TDocumentHead& head) override { writer_.BeginDocument(head); }
    void BeginList(std::string_view listType, int line) override { writer_.BeginList(listType, line); }
    void AddResource(TResource&& resource) override {
        constexpr std::size_t period = 100;
        const std::size_t place = count_++ % period;
        if (place == 0) {
            for (TProperty& property : resource.properties) {
                if (property.name == "SerialNumber" && property.shape == EShape::scalar) {
                    property.values.front() += "-2";
                }
            }
        }
        if (place != 1) {
            writer_.AddResource(std::move(resource));
        }
    }

    std::string Finish() {
        writer_.Finish();
        return std::move(out_).str();
    }

  private:
    std::ostringstream out_;
    TDocumentWriter writer_{out_};
    std::size_t count_ = 0;
};

void Read(const std::string& document, IDocumentEvents& events) {
    TDocumentInput input("document", document);
    ReadDocument(input, events);
}

struct TDocuments {
    explicit TDocuments(std::size_t units) {
        std::ostringstream out;
        TNOXXMLWriterImpl(out).WriteNamespace(MakeInventory(units));
        before = std::move(out).str();
        TChangedDocument changed;
        Read(before, changed);
        after = changed.Finish();
    }

    std::string before, after;
};

void ReadBoth(const TDocuments& documents, std::size_t& resources) {
    TNoEvents events;
    Read(documents.before, events);
    resources = events.resources;
    Read(documents.after, events);
}

void Diff(const TDocuments& documents) {
    TRecordedInventory before;
    TRecordedInventory after;
    Read(documents.before, before);
    Read(documents.after, after);
    const TComparison comparison = Compare(before.Get(), after.Get(), {});
    std::ostringstream out;
    WriteDiffText(comparison, before.Get(), after.Get(), {.width = 80}, out);
    if (comparison.IsSame() || out.str().empty()) {
        std::abort();
    }
}

// The argument is the number of machines of the workload, each of which has about 140 resources.
void DiffAgainstReadingBoth(benchmark::State& state) {
    const TDocuments documents(static_cast<std::size_t>(state.range(0)));
    TBestTime readTime;
    TBestTime diffTime;
    std::size_t resources = 0;
    for (auto iteration : state) {
        readTime.Add(CpuSeconds([&] { ReadBoth(documents, resources); }));
        const double seconds = CpuSeconds([&] { Diff(documents); });
        diffTime.Add(seconds);
        state.SetIterationTime(seconds);
    }
    constexpr double microseconds = 1e6;
    state.counters["resources"] = static_cast<double>(resources);
    state.counters["diff_us_per_resource"] =
        diffTime.GetSeconds() * microseconds / static_cast<double>(resources);
    state.counters["diff/read"] = diffTime.GetSeconds() / readTime.GetSeconds();
}
BENCHMARK(DiffAgainstReadingBoth)
    ->Arg(72)
    ->Arg(720)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace NINVENTORY
