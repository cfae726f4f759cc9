#include "machine/supervision/collecting_process.h"

#include "machine/supervision/collecting_work.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <new>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::chrono::milliseconds timeToDie(20);

[[noreturn]] void FailToStart(const TCollectionTask& task, int error) {
    throw TRunFailure("cannot start a process that collects from " + task.options.sysroot + ": " +
                      std::generic_category().message(error));
}

struct TPipe {
    TFileDescriptor readEnd;
    TFileDescriptor writeEnd;
};

TPipe MakePipe(const TCollectionTask& task) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        FailToStart(task, errno);
    }
    return {TFileDescriptor(ends[0]), TFileDescriptor(ends[1])};
}

}  // namespace

TCollectingProcess::TSharedPlace::TSharedPlace(const TCollectionTask& task) {
    void* const memory = ::mmap(nullptr, sizeof(TAccessPlace), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, /*fd=*/-1, /*offset=*/0);
    if (memory == MAP_FAILED) {
        FailToStart(task, errno);
    }
    place_ = new (memory) TAccessPlace{};
}

TCollectingProcess::TSharedPlace::~TSharedPlace() {
    (void)::munmap(place_, sizeof(TAccessPlace));
}

TCollectingProcess::TCollectingProcess(const TCollectionTask& task) : place_(task) {
    TPipe pipe = MakePipe(task);
    messages_ = std::move(pipe.readEnd);
    try {
        process_.emplace([&] { CollectAndExit(task, *place_, pipe.writeEnd.Get()); }, timeToDie);
    } catch (const std::system_error& error) {
        FailToStart(task, error.code().value());
    }
}

std::vector<TCollectingProcess::TMessage> TCollectingProcess::ReadMessages() {
    std::array<char, 65536> block;
    const ssize_t count = ::read(messages_.Get(), block.data(), block.size());
    if (count == 0 || (count < 0 && errno != EINTR)) {
        messages_ = TFileDescriptor();
    }
    std::vector<TMessage> messages;
    for (TMessageFrame& frame :
         frames_.Add({block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))})) {
        messages.push_back({static_cast<ECollectionMessage>(frame.kind), std::move(frame.bytes)});
    }
    return messages;
}

std::string TCollectingProcess::DescribeEnd() {
    const int status = process_->Wait();
    return WIFSIGNALED(status) ? "died of " + DescribeSignal(WTERMSIG(status))
                               : "ended with exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace NVORHOST
