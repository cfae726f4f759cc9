// The URL to which the documents of a run are sent: a template whose placeholders are replaced by the machine
// and the time of the run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The texts that replace the placeholders.
struct TUrlValues {
    std::string machine;  ///< identity of the machine: %{machine}
    std::string host;     ///< name of the machine: %{host}
    std::string date;     ///< yyyy-mm-dd: %{date}
    std::string time;     ///< hhmmss: %{time}
};

/// A valid template. After expansion, its URL has exactly the segments that the template shows, for any
/// values.
class TUrlTemplate {
  public:
    /// Shape:  http or https, host, optional port, and a path that ends in "/", to which the name of each
    ///         file is appended. Placeholders, such as %{machine}, occur in the path only.
    /// Errors: throws std::invalid_argument with the fault, which does not contain the URL: a URL with a
    ///         password is one of the faults.
    explicit TUrlTemplate(std::string text);

    const std::string& GetText() const { return text_; }
    /// Scheme, host and port: "https://inventory.example:8443".
    std::string GetSite() const { return text_.substr(0, pathStart_); }
    /// True for http without TLS.
    bool IsPlain() const;
    /// True if the host is this machine: localhost, an address of 127.0.0.0/8, or [::1].
    bool IsLoopback() const;

    /// Replaces the placeholders by escaped values and appends the escaped name of a file.
    /// Errors: throws std::invalid_argument with the name of a placeholder that has no value.
    std::string Expand(const TUrlValues& values, std::string_view fileName) const;

  private:
    std::string GetHost() const;

    std::string text_;
    std::size_t hostStart_ = 0;
    std::size_t pathStart_ = 0;
};

/// Returns a segment of a URL path that represents `text`: letters, digits, "-", "_" and dots that are not
/// first are kept, every other byte becomes "=" and two hexadecimal digits: "a/b" gives "a=2Fb". Different
/// texts give different segments. A percent sign never occurs, because servers decode it into a slash or a
/// dot again; "." and ".." never occur either. A text that would become longer than 200 characters ends in
/// "=-" and a digest instead.
std::string EscapeSegment(std::string_view text);

}  // namespace NVORHOST
