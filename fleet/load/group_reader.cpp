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

TGroupReaders::TGroupReaders(unsigned threads, TFileSearch& search, TVersionCache& cache)
    : search_(search), cache_(cache), queue_(queuedGroups), running_(threads) {
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

// The last thread that ends closes the queue.
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
    if (--running_ == 0) {
        queue_.Close();
    }
}

void TGroupReaders::ReadAll() {
    TInventoryReader reader(cache_);
    for (TFileGroup paths = search_.Next(); !paths.empty() && !isStopped_; paths = search_.Next()) {
        ReadGroup(paths, reader);
    }
}

void TGroupReaders::ReadGroup(const TFileGroup& paths, TInventoryReader& reader) {
    TReadGroup group;
    for (const std::string& path : paths) {
        if (IsArchive(path)) {
            ReadArchiveAt(path, reader);
            continue;
        }
        try {
            ReadInto(group, ReadSourceFile(path), reader);
        } catch (const NVORHOST::TDocumentError& error) {
            ++group.files;
            group.setAside.push_back({path, error.what()});
        }
    }
    group.inventories = SelectMoments(std::move(group.inventories));
    (void)queue_.Push(std::move(group));  // refused once the readers are stopped
}

void TGroupReaders::ReadArchiveAt(const std::string& path, TInventoryReader& reader) {
    TReadGroup end;
    end.files = 1;
    try {
        ReadArchive(path, maxMomentFiles, [&](std::vector<TSourceFile>&& files) {
            TReadGroup group;
            for (const TSourceFile& file : files) {
                ReadInto(group, file, reader);
            }
            group.files = 0;  // the archive counts once
            group.inventories = SelectMoments(std::move(group.inventories));
            (void)queue_.Push(std::move(group));  // refused once the readers are stopped
        });
    } catch (const NVORHOST::TDocumentError& error) {
        end.setAside.push_back({path, error.what()});
    }
    (void)queue_.Push(std::move(end));  // as above
}

}  // namespace NFLEET
