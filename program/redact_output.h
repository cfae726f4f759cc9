// The files that a redaction writes: all of them or none.
#pragma once

#include "vorhost/run/private_directory.h"
#include "vorhost/run/target_directory.h"

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// Collects files in private directories until they are moved into place together. Directories that do not
/// exist are made with mode 0700, and removed again if no file is moved.
class TRedactOutput {
  public:
    explicit TRedactOutput(std::string directory) : directory_(std::move(directory)) {}
    ~TRedactOutput();
    TRedactOutput(const TRedactOutput&) = delete;
    TRedactOutput& operator=(const TRedactOutput&) = delete;

    /// Calls `write` with a new file. `relative` is its path below the directory.
    /// Errors: throws TRunFailure with path and cause, also if such a file exists already, and everything
    ///         that `write` throws.
    void Write(const std::string& relative, const std::function<void(std::ostream&)>& write);

    /// Returns the path for messages.
    std::string GetPath(const std::string& relative) const;
    /// Returns the path under which this process can read a file that was written.
    std::string GetPrivatePath(const std::string& relative) const;

    /// Moves all files into place. Errors: throws TRunFailure, also if another file has appeared there.
    void MoveIntoPlace();

  private:
    struct TFolder {
        TFolder(const std::string& path, const std::string& failure)
            : target(path, failure), workplace(target, failure, /*syncs=*/true) {}

        TTargetDirectory target;
        TPrivateDirectory workplace;
        std::vector<std::string> names;
    };

    TFolder& GetFolder(const std::string& path);
    void MakeDirectories(const std::string& path);
    void RequireFree(const TFolder& folder, const std::string& name) const;

    std::string directory_;
    std::vector<std::string> made_;  // parents first
    std::map<std::string, std::unique_ptr<TFolder>> folders_;
};

}  // namespace NVORHOST
