#include "fleet/load/group_reader.h"

#include "documents/document_error.h"

#include <utility>

namespace NFLEET {
namespace {

// The queue keeps the writer busy without holding much memory.
constexpr std::size_t queuedGroups = 32;

void ReadInto(TReadGroup& group, const TSourceFile& file, TInventoryReader& reader) {
    ++group.files;
    group.bytes += file.bytes.size();
    try {
        group.inventories.push_back(reader.Read(file));
    } catch (const NVORHOST::TDocumentError& error) {
        group.setAside.push_back({file.name, error.what()});
    }
}

}  // namespace

TGroupReaders::TGroupReaders(unsigned threads, TVersionCache& cache) : cache_(cache), queue_(queuedGroups) {
    for (unsigned i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { Run(); });
    }
}

TGroupReaders::~TGroupReaders() {
    Stop();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void TGroupReaders::Stop() {
    isStopped_ = true;
    offered_.Close();
    queue_.Close();
}

std::optional<TReadGroup> TGroupReaders::Next() {
    auto group = queue_.Pop();
    const std::lock_guard lock(failureMutex_);
    if (failure_ != nullptr) {
        std::rethrow_exception(failure_);
    }
    return group;
}

void TGroupReaders::Run() {
    try {
        ReadAll();
    } catch (...) {
        {
            const std::lock_guard lock(failureMutex_);
            failure_ = std::current_exception();
        }
        Stop();
    }
}

void TGroupReaders::ReadAll() {
    TInventoryReader reader(cache_);
    for (auto files = offered_.Pop(); files && !isStopped_; files = offered_.Pop()) {
        ReadGroup(*files, reader);
    }
}

// The files of a group and what they gave so far.
struct TGroupReaders::TSum {
    std::size_t root;
    std::optional<TSource> source;  // none if something was set aside
};

void TGroupReaders::Pass(TReadGroup group, TSum& sum) {
    group.root = sum.root;
    group.inventories = SelectMoments(std::move(group.inventories));
    if (!group.setAside.empty()) {
        sum.source.reset();
    }
    if (sum.source) {
        sum.source->inventories += group.inventories.size();
    }
    if (group.isEnd) {
        group.source = sum.source;
    }
    (void)queue_.Push(std::move(group));  // refused once the readers are stopped
}

void TGroupReaders::ReadGroup(const TFileGroup& files, TInventoryReader& reader) {
    TSum sum{files.root, files.source};
    TReadGroup group;
    group.isEnd = true;
    for (const std::string& path : files.paths) {
        if (IsArchive(path)) {
            ReadArchiveAt(path, reader, sum);
            continue;
        }
        try {
            ReadInto(group, ReadSourceFile(path), reader);
        } catch (const NVORHOST::TDocumentError& error) {
            ++group.files;
            group.setAside.push_back({path, error.what()});
        }
    }
    Pass(std::move(group), sum);
}

void TGroupReaders::ReadArchiveAt(const std::string& path, TInventoryReader& reader, TSum& sum) {
    TReadGroup end;
    end.files = 1;
    try {
        ReadArchive(path, maxMomentFiles, [&](std::vector<TSourceFile>&& files) {
            TReadGroup group;
            for (const TSourceFile& file : files) {
                ReadInto(group, file, reader);
            }
            group.files = 0;  // the archive counts once
            Pass(std::move(group), sum);
        });
    } catch (const NVORHOST::TDocumentError& error) {
        end.setAside.push_back({path, error.what()});
    }
    Pass(std::move(end), sum);
}

}  // namespace NFLEET
