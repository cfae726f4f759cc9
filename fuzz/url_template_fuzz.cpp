// A template that is accepted gives, for any values, a URL with its own segments; and records are read back.
#include "fuzz.h"
#include "sending/run_record.h"
#include "sending/url_template.h"
#include "text/lines.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

using namespace NVORHOST;  // NOLINT(google-build-using-namespace): this unit tests that namespace

void RequireSegments(const TUrlTemplate& url, const std::string& expanded) {
    const std::string& text = url.GetText();
    Require(expanded.starts_with(url.GetSite() + "/"), "the host is that of the template");
    Require(std::ranges::count(expanded, '/') == std::ranges::count(text, '/'), "no value adds a segment");
    Require(expanded.find_first_of("?#\\ \n", url.GetSite().size()) == std::string::npos,
            "it has a path only");
    const std::string path = expanded.substr(url.GetSite().size()) + "/";
    Require(path.find("/../") == std::string::npos && path.find("/./") == std::string::npos, "no way up");
}

}  // namespace

// The input has one part a line: the template, its values, the name of a file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest = AsText(data, size);
    TRunRecord record{std::string(TakeUntil(rest, '\n')), {}};
    for (std::string* value :
         {&record.values.machine, &record.values.host, &record.values.date, &record.values.time}) {
        *value = TakeUntil(rest, '\n');
    }
    const auto read = ParseRunRecord(FormatRunRecord(record));
    Require(read && FormatRunRecord(*read) == FormatRunRecord(record), "a record is read back");
    (void)ParseRunRecord(AsText(data, size));
    try {
        const TUrlTemplate url(record.url);
        RequireSegments(url, url.Expand(record.values, rest));
    } catch (const std::invalid_argument&) {
        return 0;
    }
    return 0;
}
