#include "host/zet_upload.h"

#include "host/log_levels.h"
#include "host/root_object.h"
#include "os/module.h"
#include "text/shown_text.h"
#include "text/trim.h"
#include "vorhost/upload/entity_service.h"
#include "vorhost/upload/form_post.h"

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace NKELVOR20 {
namespace {

using NVORHOST::TFormField;
using NVORHOST::TPostForm;
using NVORHOST::TPostResult;

// The arguments of the operation in its order, which is also the order of the name that is hashed.
using TArguments = std::array<TFormField, 5>;

std::string DeriveIdentifier(const TArguments& arguments) {
    std::string name;
    for (const auto& argument : arguments) {
        name.append(&argument == arguments.data() ? "" : "\n").append(argument.value);
    }
    const boost::uuids::name_generator_sha1 generate(boost::uuids::ns::url());
    return boost::uuids::to_string(generate(name));
}

struct TModule {
    TPostForm* postForm = nullptr;
    std::string failure;
};

TModule LoadModule() {
    static const char anchor = 0;  // of this library, beside which the module is installed
    try {
        const std::string path = NVORHOST::FindBesideObject(&anchor, NOXINFO_HTTP_MODULE);
        return {NVORHOST::LoadFunction<TPostForm*>(path, NVORHOST::postFormSymbol), {}};
    } catch (const std::runtime_error& error) {
        return {nullptr, error.what()};
    }
}

TPostResult PostForm(const std::string& url, const TArguments& arguments) {
    static const TModule module = LoadModule();
    TPostResult result{false, module.failure};
    if (module.postForm != nullptr) {
        module.postForm(url, arguments, result);
    }
    return result;
}

// Describes why an identifier that the service issued is unusable; nullopt for a usable one.
std::optional<std::string> FindFault(const std::string& identifier) {
    constexpr std::size_t longestBytes = 1024;
    if (identifier.size() > longestBytes) {
        return "it is longer than " + std::to_string(longestBytes) + " bytes";
    }
    if (NVORHOST::MakeVisible(identifier) != identifier) {
        return "it is not one line of printable text";
    }
    return std::nullopt;
}

// A failure does not end the run, because an inventory without a credential is still useful. It is logged and
// kept for the summary.
std::string Fail(const std::string& url, const std::string& failure) {
    TRootObject::GetCoreLogger()->Log(NKELVOR20::diagnosticLevel,
                                      "zetupload: " + NVORHOST::HidePasswords(url) + ": " + failure);
    NVORHOST::SetEntityServiceFailure(failure);
    return {};
}

std::string RequestIdentifier(const std::string& url, const TArguments& arguments) {
    NVORHOST::SetEntityServiceFailure(std::nullopt);
    const TPostResult result = PostForm(url, arguments);
    if (!result.succeeded) {
        return Fail(url, result.text);
    }
    std::string identifier(NVORHOST::TrimBlanks(result.text));
    const auto fault = FindFault(identifier);
    return fault ? Fail(url, "no usable answer: " + *fault) : identifier;
}

}  // namespace

std::string TZETUpload::ZETGetEntityId(std::string dataKind, std::string contentType, std::string identity,
                                       std::string endpointPath, std::string inventoryPath) {
    const TArguments arguments{{
        {"dataKind", std::move(dataKind)},
        {"contentType", std::move(contentType)},
        {"identity", std::move(identity)},
        {"endpointPath", std::move(endpointPath)},
        {"inventoryPath", std::move(inventoryPath)},
    }};
    const auto& service = NVORHOST::FindEntityService();
    return service ? RequestIdentifier(*service, arguments) : DeriveIdentifier(arguments);
}

}  // namespace NKELVOR20
