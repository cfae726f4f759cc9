#include "host/vor_exception.h"

#include <algorithm>
#include <array>
#include <string>

namespace NKELVOR20 {
namespace {

struct TStatusText {
    TVORStatusCode::ECode code;
    std::string text;
};

// Never destroyed, because exceptions may use the texts during the destruction of static objects.
const auto& StatusTexts() {
    using enum TVORStatusCode::ECode;
    static const auto& texts = *new const std::array{
        TStatusText{success, "success"},
        TStatusText{failed, "operation failed"},
        TStatusText{accessDenied, "access denied"},
        TStatusText{invalidNamespace, "invalid namespace"},
        TStatusText{invalidParameter, "invalid parameter"},
        TStatusText{outOfMemory, "out of memory"},
        TStatusText{instanceNotFound, "instance not found"},
        TStatusText{notSupported, "operation not supported"},
        TStatusText{alreadyExists, "object already exists"},
        TStatusText{typeMismatch, "type mismatch"},
        TStatusText{valueIsNull, "value is null"},
        TStatusText{cannotCreateFile, "cannot create file"},
        TStatusText{cannotReadFile, "cannot read file"},
        TStatusText{timedOut, "operation timed out"},
        TStatusText{pluginFailed, "plug-in failed"},
        TStatusText{classNotFound, "class not found"},
        TStatusText{propertyNotFound, "property not found"},
        TStatusText{notSingleInstance, "class does not have exactly one instance"},
        TStatusText{serviceUnavailable, "service unavailable"},
        TStatusText{malformedData, "malformed data"},
    };
    return texts;
}

const std::string& UnknownStatusText() {
    static const auto& text = *new const std::string("unknown status code");
    return text;
}

}  // namespace

const std::string& TVORStatusCode::TranslateStatusCode() const {
    const auto& texts = StatusTexts();
    const auto row =
        std::ranges::find(texts, code_, [](const TStatusText& known) { return int{known.code}; });
    return row == texts.end() ? UnknownStatusText() : row->text;
}

}  // namespace NKELVOR20
