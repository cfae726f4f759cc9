#include "redaction/identities/keyed_digest.h"

#include "os/module.h"
#include "redaction/identities/digest_module_entry.h"

#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

TDigestEntry LoadEntry() {
    try {
        return LoadFunction<TDigestEntry>(
            FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_DIGEST_MODULE), digestEntryName);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("the keyed digest cannot be loaded: ") + error.what());
    }
}

}  // namespace

std::shared_ptr<IKeyedDigest> MakeKeyedDigest(const TDigestKey& key) {
    static const TDigestEntry entry = LoadEntry();
    return std::shared_ptr<IKeyedDigest>(entry(key));
}

}  // namespace NVORHOST
