// Loads a plug-in library and drives the object it registers through its whole life.
#pragma once

#include "host/cim_interfaces.h"
#include "host/export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace NVORHOST {

/// A plug-in that cannot be used; the message names the file and the cause, in one line.
class NKELVOR20_API TPluginError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Who a plug-in says it is.
struct TPluginIdentity {
    int type = 0;
    std::string name;
    std::string version;
    std::string interfaceVersion;
};

/// One loaded plug-in library with the one query plug-in it registered.
/// Life: construction loads the library, takes the registered object, checks its identity and calls `Init`;
/// destruction calls `DeInit`, `PrepareForUnload` and unloads the library. On a failed construction all that
/// was begun is undone in the same order. Errors: construction throws TPluginError (cannot be loaded,
/// registers nothing or more than one object, another interface version, not a basic query plug-in, an
/// exception out of loading, identity or `Init`).
class NKELVOR20_API TPluginLibrary {
  public:
    explicit TPluginLibrary(const std::string& path);
    ~TPluginLibrary();
    TPluginLibrary(const TPluginLibrary&) = delete;
    TPluginLibrary& operator=(const TPluginLibrary&) = delete;

    const TPluginIdentity& GetIdentity() const;
    /// The plug-in's data request; its exceptions pass through.
    void GetData(const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected,
                 std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>>& resultClasses);

  private:
    class TImpl;
    std::unique_ptr<TImpl> impl_;
};

}  // namespace NVORHOST
