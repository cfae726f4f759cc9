#include "program/redact_command.h"

#include "inventory/read/document_reader.h"
#include "program/redact_output.h"
#include "program/redact_sources.h"
#include "program/summary.h"
#include "redaction/identities/key_file.h"
#include "redaction/inventory/document_redaction.h"
#include "redaction/inventory/text_search.h"
#include "vorhost/cimxml/gzip_output.h"
#include "vorhost/run/run_failure.h"

#include <functional>
#include <limits>
#include <optional>

namespace NVORHOST {
namespace {

using NINVENTORY::TDocumentInput;

// The work on one group: its identities are learned from all of its files before the first one is written.
class TGroupRedaction {
  public:
    TGroupRedaction(const TRedactGroup& group, const TDigestKey& key)
        : identities_(key), redaction_(identities_, key) {
        for (const TRedactFile& file : group.files) {
            Learn(file);
        }
        search_.emplace(identities_);
    }

    void Write(const TRedactFile& file, TRedactOutput& output) {
        const std::string relative = identities_.Replace(file.relative, ETextContext::identities);
        output.Write(relative, [&](std::ostream& out) {
            const auto write = [&](std::ostream& text) { WriteText(file, text); };
            file.isCompressed ? WriteCompressed(out, write) : write(out);
        });
        if (const auto kind = Find(file, output.GetPrivatePath(relative), output.GetPath(relative))) {
            throw TRunFailure("nothing was written: " + std::string(GetKindName(*kind)) + " left in " +
                              output.GetPath(relative) + " after redaction");
        }
    }

    const TIdentityTexts& GetIdentities() const { return identities_; }

  private:
    void Learn(const TRedactFile& file) {
        TDocumentInput input(file.path);
        TLearnedDocument events(identities_);
        NINVENTORY::ReadDocument(input, events);
    }

    void WriteText(const TRedactFile& file, std::ostream& out) const {
        TDocumentInput input(file.path);
        TRedactedDocument events(redaction_, out);
        NINVENTORY::ReadDocument(input, events);
        events.Finish();
    }

    // Searches the finished bytes, and then each value as far as its meaning allows.
    std::optional<EIdentityKind> Find(const TRedactFile& /*file*/, const std::string& path,
                                      const std::string& name) const {
        TDocumentFile bytes(path, name, std::numeric_limits<std::uint64_t>::max());
        if (const auto kind = FindInFile(bytes, *search_)) {
            return kind;
        }
        TDocumentInput input(path);
        TSearchedDocument events(*search_);
        NINVENTORY::ReadDocument(input, events);
        return events.GetFound();
    }

    TIdentityTexts identities_;
    TResourceRedaction redaction_;
    std::optional<TIdentitySearch> search_;
};

TKeyFile GetKey(const TRedactOptions& options) {
    return options.keyFile ? LoadKeyFile(*options.keyFile) : TKeyFile{TPseudonyms::MakeKey(), false};
}

}  // namespace

EExitStatus RunRedact(const TRedactOptions& options, std::ostream& out) {
    TRedactSources sources = ListRedactSources(options.sources);
    const TKeyFile key = GetKey(options);
    TRedactSummary summary;
    TRedactOutput output(options.directory);
    for (const TRedactGroup& group : sources.groups) {
        TGroupRedaction redaction(group, key.key);
        for (const TRedactFile& file : group.files) {
            redaction.Write(file, output);
        }
        summary.files += group.files.size();
        for (const auto& [kind, count] : redaction.GetIdentities().CountIdentities()) {
            summary.identities[kind] += count;
        }
    }
    output.MoveIntoPlace();
    summary.directory = options.directory;
    summary.keyFile = options.keyFile;
    summary.isKeyNew = key.isNew;
    summary.skipped = std::move(sources.skipped);
    PrintRedactSummary(summary, out);
    return eExitDone;
}

}  // namespace NVORHOST
