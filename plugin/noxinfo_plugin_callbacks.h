// The plug-in object, which the host loads and requests data from. It turns the collected namespace into two
// gzip-compressed documents in the working directory and a result instance that contains the hardware
// document.
//
// Failure language of this folder: TVORException. Exceptions of host operations pass through, except in the
// steps that GetData documents.
#pragma once

#include "host/plugin_callbacks.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// The plug-in's own version. It is not `NKELVOR20::fdrPluginInterfaceVersion`, because the two change for
/// different reasons.
inline constexpr char kPluginVersion[] = "1.0";

/// The query plug-in. It has no data members, so requests are independent of each other. They must not
/// overlap in one working directory, because they write the same files. Text is passed by value, as in the
/// host's interfaces.
class TNoxinfoPluginCallbacks : public NKELVOR20::IPluginCallbacks,
                                public NKELVOR20::IPluginBasicQueryCallbacks {
  public:
    /// Registers the object with the host's plug-in manager, which owns it from then on. If the manager is
    /// missing or of another type, `boost::assertion_failed` is called with "px != 0".
    TNoxinfoPluginCallbacks();
    ~TNoxinfoPluginCallbacks() override;
    TNoxinfoPluginCallbacks(const TNoxinfoPluginCallbacks&) = delete;
    TNoxinfoPluginCallbacks& operator=(const TNoxinfoPluginCallbacks&) = delete;

    int GetType() override;
    std::string GetName() override;
    std::string GetVersion() override;
    std::string GetInterfaceVersion() override;
    /// Deletes the object, which must have been created with `new`.
    void PrepareForUnload() override;
    void Init() override;
    void DeInit() override;

    /// Writes "systeminformation.xml.gz" (only with an identity in ZETKELID) and "hardwareinventory.xml.gz"
    /// to the working directory, then adds to each class named `KELSG_CADAT` an instance that contains the
    /// bytes of the latter. The list itself is not changed.
    /// Absent: without a machine type, one line is logged at level 0 and nothing is written. An unreadable
    ///         identity counts as empty. A hardware file that cannot be read back yields no bytes.
    /// Errors: TVORException with `cannotCreateFile` if a file cannot be opened for writing; exceptions of
    ///         the document writer, of result classes and instances and of `GetCredential` pass through.
    ///         Objects of the request are released on every path; files already written remain.
    void GetData(boost::shared_ptr<NKELVOR20::ICIMNamespace> collected,
                 std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>>& resultClasses) override;

    /// Logs `text` at level 3, after the plug-in's prefix.
    void DebugOut(std::string text);

    /// Returns the identifier under which the host's upload service accepts the inventory of `kelId`; empty
    /// if the maker's web server cannot be reached or `kelId` is empty. Probes the network at each call.
    std::string GetCredential(std::string kelId);

    /// Encodes `inLen` bytes as Base64 (RFC 4648, padded, no line breaks) with a terminating NUL.
    /// Shape:  `out` has room for `outLen` characters and, in addition, the NUL.
    /// Returns `inLen` rounded up to a multiple of 3. If the room is too small, nothing is written and the
    /// result is meaningless.
    unsigned int Base64Encode(const unsigned char* in, unsigned int inLen, unsigned char* out,
                              unsigned int outLen);

    /// Compresses the first `length` characters of `text` and the byte after them (the NUL if `length` is the
    /// size of the text; a larger `length` counts as the size) in zlib format. Truncates the result at its
    /// first zero byte, and to the part that zlib writes into 1024 bytes. Nothing in the plug-in calls it.
    std::string GZEncodeFromStr(std::string text, unsigned long length);
};
