// Compares the writer's MD5 with OpenSSL's one-shot function, on a key of the length that resources have and
// on 64 KiB. A ratio below 1 means that the writer is faster.
#include "bench/ratio.h"
#include "writer/nox_xml_writer.h"

#include <benchmark/benchmark.h>
#include <openssl/md5.h>

#include <string>

namespace {

constexpr std::size_t bytesPerMeasurement = 8U << 20U;

// OpenSSL's deprecated function is used on purpose: the newer interface looks up the algorithm at each call.
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
    TBestTime other;
    for (auto iteration : state) {
        const double seconds = repeat(Digest);
        own.Add(seconds);
        other.Add(repeat(DigestWithOpenSsl));
        state.SetIterationTime(seconds / static_cast<double>(calls));
    }
    const double perCall = 1e9 / static_cast<double>(calls);
    state.counters["own_ns"] = own.GetSeconds() * perCall;
    state.counters["openssl_ns"] = other.GetSeconds() * perCall;
    state.counters["own/openssl"] = own.GetSeconds() / other.GetSeconds();
}

BENCHMARK(Md5AgainstOpenSsl)->UseManualTime()->Iterations(20)->Arg(40)->Arg(64 << 10);

}  // namespace
