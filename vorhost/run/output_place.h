// Where an output file of the command line goes. The path is resolved once, before anything runs, to a
// directory that is held open and a name in it, or to an open descriptor.
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
        file,        ///< regular or new: replaced as a whole
        special,     ///< a device or pipe: written directly
        descriptor,  ///< one that this process has been given: "-", /dev/stdout, /dev/fd/N, /proc/self/fd/N
        foreign,     ///< a descriptor of another process: opened by its link in /proc
    };

    /// Symbolic links of this user and of root are followed to the file that they refer to, which need not
    /// exist; other users' are refused. `failure` is what cannot be done, for people: "cannot write x".
    /// Errors: TRunFailure with `failure` and the cause.
    TOutputPlace(const std::string& path, const std::string& failure);
    /// The entry of that name in a directory, links not followed. `directory` must outlive this object.
    TOutputPlace(const TTargetDirectory& directory, const std::string& name);

    EKind GetKind() const { return kind_; }
    bool IsStandardOutput() const { return isStandardOutput_; }
    const std::string& GetName() const { return name_; }
    /// Absent for a descriptor.
    const std::optional<TTargetDirectory>& GetDirectory() const { return directory_; }
    /// Opens a device, pipe or descriptor for writing. Errors: not open, with errno.
    TFileDescriptor OpenDirectly() const;

    /// True when writing both would write one file: by the same name, a hard link, or a descriptor. Character
    /// devices, such as terminals and /dev/null, can be written to by several.
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
    std::optional<TIdentity> file_;  // absent when there is none yet
};

/// A place and what it is for, for people: "the log file x".
struct TOutputPurpose {
    std::string description;
    const TOutputPlace& place;
};

/// Throws TRunFailure when two of the places are the same file.
void RequireDistinct(const std::vector<TOutputPurpose>& places);

/// Finds where the one file that a command writes goes; the log file, if any, must be another one. Errors:
/// throws TRunFailure as above.
TOutputPlace FindOutputPlace(const std::string& file, const std::string& logFile);

}  // namespace NVORHOST
