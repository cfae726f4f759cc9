// Loads a plug-in library and controls the life of the object that it registers.
#pragma once

#include "host/cim_interfaces.h"
#include "host/export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace NVORHOST {

/// A plug-in that cannot be used. The message is one line with file and cause.
class NKELVOR20_API TPluginError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The identity that a plug-in reports.
struct TPluginIdentity {
    int type = 0;
    std::string name;
    std::string version;
    std::string interfaceVersion;
};

/// A loaded plug-in library and the query plug-in that it registered.
/// Life:   construction loads the library, checks the identity of the registered object and calls `Init`;
///         destruction calls `DeInit` and `PrepareForUnload` and unloads the library. A failed construction
///         reverts the completed stages.
/// Errors: construction throws TPluginError if the library cannot be loaded, does not register exactly one
///         object, has another interface version, is not a basic query plug-in, or throws from loading,
///         identity or `Init`.
class NKELVOR20_API TPluginLibrary {
  public:
    explicit TPluginLibrary(const std::string& path);
    ~TPluginLibrary();
    TPluginLibrary(const TPluginLibrary&) = delete;
    TPluginLibrary& operator=(const TPluginLibrary&) = delete;

    const TPluginIdentity& GetIdentity() const;
    /// Makes the data request. Exceptions of the plug-in propagate.
    void GetData(const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected,
                 std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>>& resultClasses);

  private:
    class TImpl;
    std::unique_ptr<TImpl> impl_;
};

}  // namespace NVORHOST
