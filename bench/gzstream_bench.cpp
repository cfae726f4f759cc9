// Measures the overhead of the streams over zlib: the same inventory text passes through gzofstream and
// gzifstream, and through gzwrite and gzread in blocks of 8192 bytes. Each benchmark alternates between the
// two, so that load on the machine slows both, and reports both times and the ratio of their medians. A ratio
// of 1 means no overhead.
#include "gzstream/gzstreams.h"

#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

constexpr std::size_t textSize = 4 << 20;
constexpr std::size_t blockSize = 8192;

std::string HexDigits(std::mt19937& random, int count) {
    std::string digits;
    while (count-- > 0) {
        digits += "0123456789ABCDEF"[random() % 16];
    }
    return digits;
}

/// Returns 4 MiB of resource instances, the same in every run.
std::string MakeInventoryText() {
    constexpr std::string_view classes[] = {"Processor", "PhysicalMemory", "DiskDrive", "PCIDevice",
                                            "Software"};
    constexpr std::string_view properties[] = {"Manufacturer", "Model", "Version", "SerialNumber",
                                               "SizeInBytes"};
    std::mt19937 random(1);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    while (text.size() < textSize) {
        text.append("<ResourceInstance Class=\"").append(classes[random() % std::size(classes)]);
        text.append("\" ID=\"").append(HexDigits(random, 32)).append("\">\n");
        for (const auto property : properties) {
            text.append("<Property Name=\"").append(property).append("\" Type=\"string\">\n<Value>");
            text.append(std::to_string(random() % 100000)).append("</Value>\n</Property>\n");
        }
        text.append("</ResourceInstance>\n");
    }
    text.resize(textSize);
    return text;
}

/// A temporary file, removed on destruction.
class TTemporaryFile {
  public:
    TTemporaryFile()
        : path_(std::filesystem::temp_directory_path() /
                ("gzstream-bench-" + std::to_string(getpid()) + ".gz")) {}
    ~TTemporaryFile() {
        std::error_code ignored;  // A file that cannot be removed does not affect the results.
        std::filesystem::remove(path_, ignored);
    }
    TTemporaryFile(const TTemporaryFile&) = delete;
    TTemporaryFile& operator=(const TTemporaryFile&) = delete;

    const char* Path() const { return path_.c_str(); }

  private:
    std::filesystem::path path_;
};

void Require(bool condition, const char* step) {
    if (!condition) {
        throw std::runtime_error(step);
    }
}

void WriteRaw(const char* path, const std::string& text) {
    gzFile file = gzopen(path, "wb");
    Require(file != nullptr, "gzopen");
    for (std::size_t offset = 0; offset < text.size(); offset += blockSize) {
        const auto size = static_cast<unsigned>(std::min(blockSize, text.size() - offset));
        Require(gzwrite(file, &text[offset], size) == static_cast<int>(size), "gzwrite");
    }
    Require(gzclose(file) == Z_OK, "gzclose");
}

void WriteStream(const char* path, const std::string& text) {
    gzofstream stream(path, std::ios_base::binary);
    stream << text;
    stream.close();
    Require(stream.good(), "gzofstream");
}

std::size_t ReadRaw(const char* path) {
    gzFile file = gzopen(path, "rb");
    Require(file != nullptr, "gzopen");
    char block[blockSize];
    std::size_t size = 0;
    for (int got = 0; (got = gzread(file, block, blockSize)) > 0; size += static_cast<std::size_t>(got)) {
        benchmark::DoNotOptimize(block);
    }
    Require(gzclose(file) == Z_OK, "gzclose");
    return size;
}

std::size_t ReadStream(const char* path) {
    gzifstream stream(path, std::ios_base::binary);
    char block[blockSize];
    std::size_t size = 0;
    while (stream.read(block, blockSize), stream.gcount() > 0) {
        benchmark::DoNotOptimize(block);
        size += static_cast<std::size_t>(stream.gcount());
    }
    return size;
}

/// Returns the processor time of this process in milliseconds.
double ProcessorTimeMs() {
    timespec now{};
    Require(clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now) == 0, "clock_gettime");
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

template <typename TAction>
double TimeMs(TAction action) {
    const double start = ProcessorTimeMs();
    action();
    return ProcessorTimeMs() - start;
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <typename TStream, typename TRaw>
void CompareInTurn(benchmark::State& state, TStream throughStream, TRaw raw) {
    std::vector<double> streamMs;
    std::vector<double> rawMs;
    for ([[maybe_unused]] const auto& round : state) {
        // The second one finds warmer caches, so the order alternates.
        const bool streamFirst = streamMs.size() % 2 == 0;
        if (streamFirst) {
            streamMs.push_back(TimeMs(throughStream));
        }
        rawMs.push_back(TimeMs(raw));
        if (!streamFirst) {
            streamMs.push_back(TimeMs(throughStream));
        }
    }
    state.counters["stream_ms"] = Median(streamMs);
    state.counters["raw_ms"] = Median(rawMs);
    state.counters["ratio"] = Median(streamMs) / Median(rawMs);
}

void Write(benchmark::State& state) {
    const std::string text = MakeInventoryText();
    const TTemporaryFile file;
    CompareInTurn(
        state, [&] { WriteStream(file.Path(), text); }, [&] { WriteRaw(file.Path(), text); });
}
BENCHMARK(Write)->Unit(benchmark::kMillisecond)->Iterations(41);

void Read(benchmark::State& state) {
    const TTemporaryFile file;
    WriteRaw(file.Path(), MakeInventoryText());
    CompareInTurn(
        state, [&] { Require(ReadStream(file.Path()) == textSize, "gzifstream"); },
        [&] { Require(ReadRaw(file.Path()) == textSize, "gzread"); });
}
BENCHMARK(Read)->Unit(benchmark::kMillisecond)->Iterations(201);

}  // namespace
