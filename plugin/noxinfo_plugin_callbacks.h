// The plug-in object: what the host loads, registers and asks for data. It turns the collected namespace into
// two gzip-compressed documents in the working directory and a result instance that carries the first of
// them.
//
// Failure language of this folder: TVORException. What host operations throw passes through, but for the
// steps of a request that GetData names.
#pragma once

#include "host/plugin_callbacks.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// The plug-in's own version. Apart from `NKELVOR20::fdrPluginInterfaceVersion` on purpose: the two change
/// for different reasons.
inline constexpr char kPluginVersion[] = "1.0";

/// The query plug-in. Holds no data: all that a request needs lives on the stack of `GetData`, so calls are
/// independent of each other. Requests must not overlap in one working directory, since they write the same
/// files. Text travels by value, as it does in the host's interfaces.
class TNoxinfoPluginCallbacks : public NKELVOR20::IPluginCallbacks,
                                public NKELVOR20::IPluginBasicQueryCallbacks {
  public:
    /// Registers the object with the host's plug-in manager, which owns it from then on. A manager that is
    /// missing or of another type ends in `boost::assertion_failed` with "px != 0".
    TNoxinfoPluginCallbacks();
    ~TNoxinfoPluginCallbacks() override;
    TNoxinfoPluginCallbacks(const TNoxinfoPluginCallbacks&) = delete;
    TNoxinfoPluginCallbacks& operator=(const TNoxinfoPluginCallbacks&) = delete;

    int GetType() override;
    std::string GetName() override;
    std::string GetVersion() override;
    std::string GetInterfaceVersion() override;
    /// Deletes the object, which therefore must have been made with `new`.
    void PrepareForUnload() override;
    void Init() override;
    void DeInit() override;

    /// Writes "systeminformation.xml.gz" (only with an identity in ZETKELID) and "hardwareinventory.xml.gz"
    /// to the working directory, then adds to each class named `KELSG_CADAT` an instance that carries the
    /// bytes of the latter. The list itself is left as it is.
    /// Absent: without a machine type one line is logged at level 0 and nothing is written. An identity that
    ///         cannot be read counts as empty. A hardware file that cannot be read back gives no bytes.
    /// Errors: TVORException with `cannotCreateFile` when a file cannot be opened for writing; failures of
    ///         the document writer, of result classes and instances and of `GetCredential` pass through.
    ///         What the request made is released on every path; files already written stay.
    void GetData(boost::shared_ptr<NKELVOR20::ICIMNamespace> collected,
                 std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>>& resultClasses) override;

    /// Logs `text` at level 3 behind the plug-in's prefix.
    void DebugOut(std::string text);

    /// The identifier under which the host's upload service accepts the inventory of `kelId`; empty when the
    /// maker's web server cannot be reached, or else when `kelId` is empty. Probes the network every time.
    std::string GetCredential(std::string kelId);

    /// Encodes `inLen` bytes as Base64 (RFC 4648, padded, no line breaks) with a terminating NUL.
    /// Shape:  `outLen` is the room for characters; `out` must hold one byte more for the NUL.
    /// Result: `inLen` raised to the next multiple of 3. With too little room nothing is written, and the
    ///         result means nothing.
    unsigned int Base64Encode(const unsigned char* in, unsigned int inLen, unsigned char* out,
                              unsigned int outLen);

    /// Compresses `length` characters of `text` and the byte behind them (the NUL, when `length` is the size
    /// of the text; a longer `length` counts as the size) in zlib format, and cuts the result at its first
    /// zero byte. A result of more than 1024 bytes is cut at whatever zlib had written by then. Nothing in
    /// the plug-in calls it.
    std::string GZEncodeFromStr(std::string text, unsigned long length);
};
