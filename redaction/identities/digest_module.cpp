// The keyed digest as a module, which brings the library of digests into the process.
#include "host/export.h"
#include "redaction/identities/digest_module_entry.h"

#include <nettle/hmac.h>

#include <type_traits>

namespace NVORHOST {
namespace {

class THmacSha256 final : public IKeyedDigest {
  public:
    explicit THmacSha256(const TDigestKey& key) {
        std::array<std::uint8_t, sizeof(TDigestKey)> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<std::uint8_t>(key[i / 8] >> (i % 8 * 8));
        }
        nettle_hmac_sha256_set_key(&state_, bytes.size(), bytes.data());
    }

    TDigest Compute(std::string_view bytes) override {
        TDigest digest{};
        static_assert(std::tuple_size_v<TDigest> == SHA256_DIGEST_SIZE);
        nettle_hmac_sha256_update(
            &state_, bytes.size(),
            reinterpret_cast<const std::uint8_t*>(bytes.data()));  // NOLINT(*-reinterpret-cast): C interface
        nettle_hmac_sha256_digest(&state_, digest.size(), digest.data());  // also starts the next one
        return digest;
    }

  private:
    hmac_sha256_ctx state_{};
};

}  // namespace
}  // namespace NVORHOST

extern "C" NKELVOR20_API NVORHOST::IKeyedDigest* NVORHOST_MakeKeyedDigest(const NVORHOST::TDigestKey& key) {
    return new NVORHOST::THmacSha256(key);
}

static_assert(std::is_same_v<decltype(&NVORHOST_MakeKeyedDigest), NVORHOST::TDigestEntry>);
