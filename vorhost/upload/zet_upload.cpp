// The upload service's identifiers: derived on the spot, or issued by a service over HTTP.
#include "host/zet_upload.h"

#include "host/root_object.h"
#include "text/shown_text.h"
#include "vorhost/upload/entity_service.h"
#include "vorhost/upload/form_post.h"

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <dlfcn.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace NKELVOR20 {
namespace {

using NVORHOST::TFormField;
using NVORHOST::TPostForm;
using NVORHOST::TPostResult;

// In the order of the operation's arguments, which is also the order of the name that is hashed.
using TArguments = std::array<TFormField, 5>;

std::string DeriveIdentifier(const TArguments& arguments) {
    std::string name;
    for (const auto& argument : arguments) {
        name.append(&argument == arguments.data() ? "" : "\n").append(argument.value);
    }
    const boost::uuids::name_generator_sha1 generate(boost::uuids::ns::url());
    return boost::uuids::to_string(generate(name));
}

// The module lies relative to this very library, wherever an installation has been moved to.
std::string GetModulePath() {
    static const char anchor = 0;
    Dl_info self{};
    if (::dladdr(&anchor, &self) == 0 || self.dli_fname == nullptr) {
        return NOXINFO_HTTP_MODULE;
    }
    const std::string_view own = self.dli_fname;
    return std::string(own.substr(0, own.rfind('/') + 1)) + NOXINFO_HTTP_MODULE;
}

struct TModule {
    TPostForm* postForm = nullptr;
    std::string failure;
};

// Stays loaded: libcurl keeps state for the whole process.
TModule LoadModule() {
    void* handle = ::dlopen(GetModulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* symbol = handle == nullptr ? nullptr : ::dlsym(handle, NVORHOST::postFormSymbol);
    if (symbol == nullptr) {
        const char* cause = ::dlerror();  // NOLINT(concurrency-mt-unsafe): per thread in glibc
        return {nullptr, cause == nullptr ? "the HTTP module cannot be loaded" : cause};
    }
    return {reinterpret_cast<TPostForm*>(symbol), {}};  // NOLINT(*-reinterpret-cast): as dlsym is meant
}

TPostResult PostForm(const std::string& url, const TArguments& arguments) {
    static const TModule module = LoadModule();
    TPostResult result{false, module.failure};
    if (module.postForm != nullptr) {
        module.postForm(url, arguments, result);
    }
    return result;
}

std::string Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(begin, text.find_last_not_of(blanks) - begin + 1));
}

// What is wrong with an identifier that a service has issued; empty when nothing is.
std::string FindFault(const std::string& identifier) {
    constexpr std::size_t longestBytes = 1024;
    if (identifier.size() > longestBytes) {
        return "it is longer than " + std::to_string(longestBytes) + " bytes";
    }
    return NVORHOST::MakeVisible(identifier) == identifier ? "" : "it is no printable text of one line";
}

// An inventory without a credential is better than none, so a failure is logged and kept for the summary.
std::string Fail(const std::string& url, const std::string& failure) {
    constexpr int warning = 3;
    TRootObject::GetCoreLogger()->Log(warning, "zetupload: " + NVORHOST::HidePasswords(url) + ": " + failure);
    NVORHOST::SetEntityServiceFailure(failure);
    return {};
}

std::string RequestIdentifier(const std::string& url, const TArguments& arguments) {
    NVORHOST::SetEntityServiceFailure({});
    const TPostResult result = PostForm(url, arguments);
    if (!result.succeeded) {
        return Fail(url, result.text);
    }
    std::string identifier = Trim(result.text);
    const std::string fault = FindFault(identifier);
    return fault.empty() ? identifier : Fail(url, "no usable answer: " + fault);
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
    const std::string& service = NVORHOST::GetEntityService();
    return service.empty() ? DeriveIdentifier(arguments) : RequestIdentifier(service, arguments);
}

}  // namespace NKELVOR20
