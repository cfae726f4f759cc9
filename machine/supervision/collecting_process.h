// A process that collects. Only it opens and reads the machine: an access that never returns blocks that
// process, not the run.
#pragma once

#include "machine/supervision/collection_task.h"
#include "machine/supervision/message_frame.h"
#include "machine/system/access_place.h"
#include "os/file_descriptor.h"
#include "vorhost/run/child_process.h"

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Forks a process that works on a task (collecting_work.h). It is killed on destruction; then the run waits
/// a moment for it to die, but not if the kernel holds it.
class TCollectingProcess {
  public:
    /// Errors: throws TRunFailure if pipe, shared memory or process cannot be created.
    explicit TCollectingProcess(const TCollectionTask& task);
    TCollectingProcess(const TCollectingProcess&) = delete;
    TCollectingProcess& operator=(const TCollectingProcess&) = delete;
    ~TCollectingProcess() = default;

    struct TMessage {
        ECollectionMessage kind;
        std::string bytes;
    };

    /// Readable when messages, or their end, can be read. -1 after the end.
    int GetDescriptor() const { return messages_.Get(); }
    /// Reads the messages that have arrived; does not block if the descriptor is readable. If GetDescriptor
    /// is -1 afterwards, the process has ended or is about to.
    std::vector<TMessage> ReadMessages();

    /// The access that the process is performing.
    const TAccessPlace& GetPlace() const { return *place_; }
    /// Waits for the process and describes its end for people: "died of signal 9 (Killed)". Call after the
    /// end of its messages.
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

    TSharedPlace place_;
    TFileDescriptor messages_;
    TFrameReader frames_;
    std::optional<TChildProcess> process_;
};

}  // namespace NVORHOST
