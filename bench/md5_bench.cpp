// The writer's MD5 against OpenSSL's one-shot function, on a key as resources have them and on 64 KiB.
// Ratios: below 1 the writer's is the faster side.
#include "bench/ratio.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <openssl/md5.h>

#include <string>

namespace {

constexpr std::size_t bytesPerMeasurement = 8U << 20U;

// The rival is the plain function on purpose: the newer interface looks the algorithm up at every call.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
void DigestWithOpenSsl(const std::string& data) {
    unsigned char digest[MD5_DIGEST_LENGTH];
    MD5(reinterpret_cast<const unsigned char*>(data.data()), data.size(), digest);
    benchmark::DoNotOptimize(digest);
}
#pragma GCC diagnostic pop

void Digest(const std::string& data) {
    unsigned char digest[TNOXXMLWriterImpl::digestLength];
    TNOXXMLWriterImpl::MD5(data.data(), static_cast<unsigned int>(data.size()), digest);
    benchmark::DoNotOptimize(digest);
}

void Md5AgainstOpenSsl(benchmark::State& state) {
    const std::string data(static_cast<std::size_t>(state.range(0)), 'x');
    const std::size_t calls = bytesPerMeasurement / (data.size() + 64);
    const auto repeat = [&](void (*digest)(const std::string&)) {
        return CpuSeconds([&] {
            for (std::size_t call = 0; call < calls; ++call) {
                digest(data);
            }
        });
    };
    TBestTime own;
    TBestTime rival;
    for (auto iteration : state) {
        const double seconds = repeat(Digest);
        own.Add(seconds);
        rival.Add(repeat(DigestWithOpenSsl));
        state.SetIterationTime(seconds / static_cast<double>(calls));
    }
    const double perCall = 1e9 / static_cast<double>(calls);
    state.counters["own_ns"] = own.GetSeconds() * perCall;
    state.counters["openssl_ns"] = rival.GetSeconds() * perCall;
    state.counters["own/openssl"] = own.GetSeconds() / rival.GetSeconds();
}

BENCHMARK(Md5AgainstOpenSsl)->UseManualTime()->Iterations(20)->Arg(40)->Arg(64 << 10);

}  // namespace
