// A process that collects. The machine is opened and read there alone: an access that never returns keeps
// that process, and not the run.
#pragma once

#include "machine/supervision/machine_options.h"
#include "machine/system/access_place.h"
#include "machine/system/watched_files.h"
#include "os/file_descriptor.h"
#include "vorhost/run/interruption.h"

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

enum class ECollects {
    instances,  ///< for a namespace
    logs,       ///< what the collectors read, for a capture
};

struct TCollectionTask {
    TMachineOptions options;
    ECollects collects = ECollects::instances;
    std::vector<TCollector> collectors;
    std::size_t first = 0;        ///< place of the first collector to run
    TUnansweredPaths unanswered;  ///< paths that are not to be tried again
    /// The moment of the collection where an earlier process has found it.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
};

/// The messages of a collecting process, in this order: `opened` with the moment of the collection as text,
/// or empty; `result` for each collector, with its place and what collector_message.h or recorded_machine.h
/// writes; `done`. In place of any, `failed` with the line for people.
enum class ECollectionMessage : unsigned char { opened, result, failed, done };

/// Forks off a process that works on the task. It has none of the descriptors of the run, its standard
/// streams are /dev/null, its working directory is "/" once a relative name of the machine is opened, it has
/// no terminal, and it dies with the run. It is killed on destruction, and waited for as long as a process
/// takes to die that is not held by the kernel.
class TCollectingProcess {
  public:
    /// Errors: throws TRunFailure when there is no process to be had.
    explicit TCollectingProcess(const TCollectionTask& task);
    ~TCollectingProcess();
    TCollectingProcess(const TCollectingProcess&) = delete;
    TCollectingProcess& operator=(const TCollectingProcess&) = delete;

    struct TMessage {
        ECollectionMessage kind;
        std::string bytes;
    };

    /// Readable when there are messages, or their end. -1 after the end.
    int GetDescriptor() const { return messages_.Get(); }
    /// Reads what is there, without waiting when the descriptor is readable. The process has ended, or is
    /// about to, when GetDescriptor is -1 afterwards.
    std::vector<TMessage> ReadMessages();

    const TAccessPlace& GetPlace() const { return *place_; }
    /// How it ended, for people: "died of signal 9 (Killed)". To be called after the end of its messages.
    std::string DescribeEnd();

  private:
    class TSharedPlace {
      public:
        explicit TSharedPlace(const TCollectionTask& task);
        ~TSharedPlace();
        TSharedPlace(const TSharedPlace&) = delete;
        TSharedPlace& operator=(const TSharedPlace&) = delete;
        TAccessPlace& operator*() const { return *place_; }

      private:
        TAccessPlace* place_;
    };

    void Fork(const TCollectionTask& task, int output);

    TSharedPlace place_;
    TFileDescriptor messages_;
    std::string unread_;  // the start of a message whose rest is still to come
    pid_t process_ = -1;
    std::optional<TUnfinished> unfinished_;
};

}  // namespace NVORHOST
