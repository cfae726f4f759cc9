#include "vorhost/run/run_failure.h"

#include <new>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char remedy[] = "allow this program more (ulimit -v, or the memory limit of its service)";

// The message of the dynamic loader if there is no address space for a library.
constexpr std::string_view unmappedLibrary = "failed to map segment from shared object";

bool IsThreadFailure(const std::exception& error) {
    const auto* const failure = dynamic_cast<const std::system_error*>(&error);
    return failure != nullptr && failure->code() == std::errc::resource_unavailable_try_again;
}

}  // namespace

std::string DescribeFailure(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return std::string("out of memory: ") + remedy;
    }
    if (IsThreadFailure(error)) {
        return std::string("no memory for a thread, or too many processes: ") + remedy;
    }
    const std::string text = error.what();
    return text.find(unmappedLibrary) == std::string::npos ? text : text + "; out of memory: " + remedy;
}

}  // namespace NVORHOST
