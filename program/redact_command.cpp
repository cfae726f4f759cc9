#include "program/redact_command.h"

#include "documents/document_error.h"
#include "inventory/read/document_reader.h"
#include "machine/capture/archive.h"
#include "machine/capture/captured_folder.h"
#include "machine/capture/redaction.h"
#include "program/redact_output.h"
#include "program/redact_sources.h"
#include "program/summary.h"
#include "redaction/identities/key_file.h"
#include "redaction/inventory/document_redaction.h"
#include "redaction/inventory/namespace_redaction.h"
#include "redaction/inventory/text_search.h"
#include "vorhost/cimxml/gzip_output.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/run_failure.h"

#include <functional>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

using NINVENTORY::TDocumentInput;

constexpr std::uint64_t maxBytes = std::numeric_limits<std::uint64_t>::max();
constexpr std::string_view gzipMark = "\x1F\x8B";

TMemoryNamespace Load(const std::string& path) {
    TMemoryNamespace loaded;
    LoadNamespace(path, loaded);
    return loaded;
}

// Saved results have instances without declarations of their classes; saved namespaces have both.
void Save(const TMemoryNamespace& saved, std::ostream& out) {
    const auto& classes = saved.GetClasses();
    if (classes.size() == 1 && classes.front()->GetDeclarations().empty()) {
        SaveInstances(classes.front()->GetName(), classes.front()->GetInstances(), out);
    } else {
        SaveNamespace(saved, out);
    }
}

bool IsCapture(const TRedactFile& file) {
    return file.kind == ERedactKind::archive || file.kind == ERedactKind::tree;
}

[[noreturn]] void FailForIdentity(EIdentityKind kind, const std::string& place) {
    throw TRunFailure("nothing was written: " + std::string(GetKindName(kind)) + " left in " + place +
                      " after redaction");
}

TCaptureTree ReadCaptureArchive(const std::string& path) {
    try {
        TCaptureTree tree = ReadArchive(path);
        if (tree.Find(captureAnswersPath) == nullptr && tree.Find("/sys") == nullptr) {
            throw std::runtime_error("is not a capture");
        }
        return tree;
    } catch (const std::runtime_error& error) {
        ThrowAt({path, {}, {}, {}}, error.what());
    }
}

// The work on the documents and namespaces of one group: its identities are learned from all of its files
// before the first one is written.
class TGroupRedaction {
  public:
    TGroupRedaction(const TRedactGroup& group, const TDigestKey& key)
        : identities_(key), redaction_(identities_, key) {
        for (const TRedactFile& file : group.files) {
            if (!IsCapture(file)) {
                Learn(file);
            }
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
            FailForIdentity(*kind, output.GetPath(relative));
        }
    }

    const TIdentityTexts& GetIdentities() const { return identities_; }

  private:
    void Learn(const TRedactFile& file) {
        if (file.kind == ERedactKind::cimXml) {
            return LearnNamespace(Load(file.path), identities_, [&](const std::string& bytes) {
                TDocumentInput document(file.path, bytes);
                Learn(document);
                return bytes;
            });
        }
        TDocumentInput input(file.path);
        Learn(input);
    }

    void Learn(TDocumentInput& input) {
        TLearnedDocument events(identities_);
        NINVENTORY::ReadDocument(input, events);
    }

    void WriteText(const TRedactFile& file, std::ostream& out) {
        if (file.kind == ERedactKind::cimXml) {
            return Save(RedactNamespace(Load(file.path), identities_,
                                        [&](const std::string& bytes) { return Redact(file.path, bytes); }),
                        out);
        }
        TDocumentInput input(file.path);
        WriteDocument(input, out);
    }

    void WriteDocument(TDocumentInput& input, std::ostream& out) {
        TRedactedDocument events(redaction_, *search_, out);
        NINVENTORY::ReadDocument(input, events);
        events.Finish();
        found_ = found_ ? found_ : events.GetFound();
    }

    // Returns the document of a result, compressed as it was.
    std::string Redact(const std::string& name, const std::string& bytes) {
        const auto write = [&](std::ostream& out) {
            TDocumentInput input(name, bytes);
            WriteDocument(input, out);
        };
        std::ostringstream out;
        bytes.starts_with(gzipMark) ? WriteCompressed(out, write) : write(out);
        return std::move(out).str();
    }

    // Searches the finished bytes. The values of documents were searched while they were written.
    std::optional<EIdentityKind> Find(const TRedactFile& file, const std::string& path,
                                      const std::string& name) const {
        TDocumentFile bytes(path, name, maxBytes);
        if (const auto kind = found_ ? found_ : FindInFile(bytes, *search_)) {
            return kind;
        }
        return file.kind == ERedactKind::cimXml ? FindInSaved(path, name) : std::nullopt;
    }

    std::optional<EIdentityKind> FindInSaved(const std::string& path, const std::string& name) const {
        std::optional<EIdentityKind> found;
        const auto kind = FindInNamespace(Load(path), *search_, [&](const std::string& bytes) {
            TDocumentFile document(name, std::string_view(bytes), maxBytes);
            found = found ? found : FindInFile(document, *search_);
            return bytes;
        });
        return kind ? kind : found;
    }

    TIdentityTexts identities_;
    TResourceRedaction redaction_;
    std::optional<TIdentitySearch> search_;
    std::optional<EIdentityKind> found_;  // an identity in a value that was written
};

// Writes a packed copy of a capture and returns its identities. A capture has identities of its own: it is
// redacted alone.
TIdentityCounts WriteCapture(const TRedactFile& file, const TDigestKey& key, TRedactOutput& output) {
    TCaptureTree tree =
        file.kind == ERedactKind::tree ? ReadCapturedFolder(file.path) : ReadCaptureArchive(file.path);
    const TRedactedMachine machine = RedactCapture(key, tree);
    const std::string relative = machine.identities.Replace(file.relative, ETextContext::identities);
    output.Write(relative, [&](std::ostream& out) { WriteArchive(tree, out); });
    if (const auto left = FindIdentityLeft(machine, ReadArchive(output.GetPrivatePath(relative)))) {
        FailForIdentity(left->kind, left->path + " of " + output.GetPath(relative));
    }
    return machine.identities.CountIdentities();
}

TKeyFile GetKey(const TRedactOptions& options) {
    return options.keyFile ? LoadKeyFile(*options.keyFile) : TKeyFile{TPseudonyms::MakeKey(), false};
}

void Add(const TIdentityCounts& counts, TIdentityCounts& sums) {
    for (const auto& [kind, count] : counts) {
        sums[kind] += count;
    }
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
            if (IsCapture(file)) {
                Add(WriteCapture(file, key.key, output), summary.identities);
            } else {
                redaction.Write(file, output);
            }
        }
        summary.files += group.files.size();
        Add(redaction.GetIdentities().CountIdentities(), summary.identities);
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
