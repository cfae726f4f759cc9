// Compares the plug-in's Base64 with OpenSSL's on 4 MB, the size of a large hardware file. Both write the
// same text with a NUL. A ratio below 1 means that the plug-in is faster.
#include "bench/ratio.h"
#include "plugin/noxinfo_plugin_callbacks.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr unsigned int byteCount = 4'000'000;
constexpr unsigned int textLength = (byteCount + 2) / 3 * 4;

using TBytes = std::vector<unsigned char>;

TBytes RandomBytes() {
    std::mt19937 random(1);
    TBytes bytes(byteCount);
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<unsigned char>(random()); });
    return bytes;
}

void Base64AgainstOpenssl(benchmark::State& state) {
    const TBytes bytes = RandomBytes();
    TBytes ours(textLength + 1);
    TBytes theirs(textLength + 1);
    auto* const plugin = new TNoxinfoPluginCallbacks;  // owned by the plug-in manager
    TBestTime encoding;
    TBestTime comparison;
    for (auto iteration : state) {
        const double seconds =
            CpuSeconds([&] { plugin->Base64Encode(bytes.data(), byteCount, ours.data(), textLength); });
        encoding.Add(seconds);
        comparison.Add(CpuSeconds([&] { EVP_EncodeBlock(theirs.data(), bytes.data(), byteCount); }));
        state.SetIterationTime(seconds);
    }
    if (ours != theirs) {
        std::abort();
    }
    state.counters["plugin_MB_per_s"] = byteCount / 1e6 / encoding.GetSeconds();
    state.counters["openssl_MB_per_s"] = byteCount / 1e6 / comparison.GetSeconds();
    state.counters["plugin/openssl"] = encoding.GetSeconds() / comparison.GetSeconds();
}

BENCHMARK(Base64AgainstOpenssl)->UseManualTime()->Iterations(200)->Unit(benchmark::kMillisecond);

}  // namespace
