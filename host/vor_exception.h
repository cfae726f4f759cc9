// The exception by which host and plug-ins report failures to each other.
//
// Binary contract: TVORException is a vtable pointer followed by the status code; its virtual slots are the
// two destructors, then what(). Its members are inline, so every module has a copy; assertions below pin the
// layout.
#pragma once

#include "host/export.h"

#include <exception>
#include <string>

namespace NKELVOR20 {

/// A status code of the host: a number with a text.
class NKELVOR20_API TVORStatusCode {
  public:
    /// The codes of the host. Plug-ins rely on the numbers of `cannotCreateFile` and `classNotFound`.
    enum ECode : int {
        success = 0,
        failed = 1,
        accessDenied = 2,
        invalidNamespace = 3,
        invalidParameter = 4,
        outOfMemory = 5,
        instanceNotFound = 6,
        notSupported = 7,
        alreadyExists = 8,
        typeMismatch = 9,
        valueIsNull = 10,
        cannotCreateFile = 11,
        cannotReadFile = 12,
        timedOut = 13,
        pluginFailed = 14,
        classNotFound = 15,
        propertyNotFound = 16,
        notSingleInstance = 17,
        serviceUnavailable = 18,
        malformedData = 19,
    };

    explicit TVORStatusCode(int code) : code_(code) {}

    int GetCode() const { return code_; }

    /// Returns a short English text without a full stop; "unknown status code" for an unlisted number.
    /// The reference remains valid for the life of the program.
    const std::string& TranslateStatusCode() const;

  private:
    int code_;
};

/// The exception of the host. It carries only a status code.
class NKELVOR20_API TVORException : public std::exception {
  public:
    explicit TVORException(int code) : statusCode_(code) {}
    ~TVORException() override = default;

    /// Returns the text of the status code; valid for the life of the program.
    const char* what() const noexcept override { return statusCode_.TranslateStatusCode().c_str(); }

    const TVORStatusCode& GetStatusCode() const noexcept { return statusCode_; }

  private:
    TVORStatusCode statusCode_;
};

static_assert(sizeof(TVORStatusCode) == sizeof(int));
static_assert(sizeof(TVORException) == 2 * sizeof(void*), "vtable pointer, code, padding");

}  // namespace NKELVOR20
