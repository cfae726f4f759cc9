// The destination of an output file. Its path is resolved once, before the run starts, to an open directory
// and a name in it, or to an open descriptor.
#pragma once

#include "os/file_descriptor.h"
#include "vorhost/run/target_directory.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {

class TOutputPlace {
  public:
    enum class EKind {
        file,        ///< regular or new file: replaced as a whole
        special,     ///< device or pipe: written directly
        descriptor,  ///< open descriptor of this process: "-", /dev/stdout, /dev/fd/N, /proc/self/fd/N
        foreign,     ///< descriptor of another process: opened through its link in /proc
    };

    /// Follows symbolic links of this user and of root to their target, which need not exist; refuses links
    /// of other users.
    /// Errors: throws TRunFailure with `failure` ("cannot write x") and the cause.
    TOutputPlace(const std::string& path, const std::string& failure);
    /// The entry of that name in a directory; a symbolic link is not followed.
    /// Errors: throws TRunFailure if the process has no more descriptors.
    TOutputPlace(const TTargetDirectory& directory, const std::string& name);

    EKind GetKind() const { return kind_; }
    bool IsStandardOutput() const { return isStandardOutput_; }
    const std::string& GetName() const { return name_; }
    /// The directory of the entry; absent for a descriptor.
    const std::optional<TTargetDirectory>& FindDirectory() const { return directory_; }
    /// Opens a device, pipe or descriptor for writing. Errors: not open, with errno.
    TFileDescriptor OpenDirectly() const;

    /// True if both places are the same file: by name, hard link or descriptor. False for character devices,
    /// such as terminals and /dev/null: several outputs may share one.
    bool IsSameAs(const TOutputPlace& other) const;

  private:
    struct TIdentity {
        dev_t device;
        ino_t inode;
        bool operator==(const TIdentity&) const = default;
    };

    void Resolve(const std::string& path, const std::string& failure);
    void TakeDescriptor(int number, const std::string& failure);
    void Identify();

    EKind kind_ = EKind::file;
    bool isStandardOutput_ = false;
    bool isShareable_ = false;
    std::optional<TTargetDirectory> directory_;
    std::string name_;
    TFileDescriptor descriptor_;
    std::optional<TIdentity> parent_;
    std::optional<TIdentity> file_;  // absent for a new file
};

/// A place and its description for people: "the log file x".
struct TOutputPurpose {
    std::string description;
    const TOutputPlace& place;
};

/// Throws TRunFailure if two of the places are the same file.
void RequireDistinct(const std::vector<TOutputPurpose>& places);

/// Resolves the output file of a command that writes only one.
/// Errors: throws TRunFailure if it cannot be resolved, and if it is the same file as the log file.
TOutputPlace ResolveOutputPlace(const std::string& file, const std::optional<std::string>& logFile);

}  // namespace NVORHOST
