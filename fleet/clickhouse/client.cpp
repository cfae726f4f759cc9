#include "fleet/clickhouse/client.h"

#include "text/ascii.h"
#include "text/hex.h"
#include "text/lines.h"
#include "text/numbers.h"
#include "text/shown_text.h"

#include <algorithm>
#include <exception>
#include <random>

namespace NFLEET {
namespace {

constexpr std::chrono::minutes longestStatement(10);
constexpr std::size_t longestFailureBytes = 65'536;
constexpr int statusOk = 200;
constexpr std::string_view plainType = "text/plain; charset=UTF-8";
constexpr std::string_view rowsType = "application/octet-stream";

std::string EncodeForUrl(std::string_view text) {
    std::string encoded;
    for (const char c : text) {
        if (NVORHOST::IsAlphanumeric(c) || c == '_' || c == '-' || c == '.') {
            encoded.push_back(c);
        } else {
            encoded.append("%").append(NVORHOST::ToHex({&c, 1}, NVORHOST::EHexCase::upper));
        }
    }
    return encoded;
}

// Returns `text` up to the last place of `end`; all of it if there is none.
std::string_view CutAtLast(std::string_view text, std::string_view end) {
    return text.substr(0, text.rfind(end));
}

std::string MakeBoundary(std::string_view rows) {
    std::random_device random;
    for (;;) {
        std::string boundary = "rows";
        for (int i = 0; i < 4; ++i) {
            boundary += NVORHOST::ToHexDigits(random(), 8);
        }
        if (rows.find(boundary) == std::string_view::npos) {
            return boundary;
        }
    }
}

// Returns the table as a form with one file.
std::string MakeForm(const TTemporaryTable& table, const std::string& boundary) {
    return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + table.name +
           "\"; filename=\"rows\"\r\nContent-Type: " + std::string(rowsType) + "\r\n\r\n" + table.rows +
           "\r\n--" + boundary + "--\r\n";
}

// Collects the answer of a request: rows go to a consumer, a failure is kept. Exceptions of the consumer end
// the transfer and are thrown again after it, because they must not propagate through libcurl.
class TAnswerReceiver {
  public:
    using TConsume = std::function<std::size_t(std::string_view)>;

    explicit TAnswerReceiver(const TConsume& consume) : consume_(consume) {}

    bool Take(int status, std::string_view part) {
        try {
            if (status != statusOk) {
                pending_.append(
                    part.substr(0, longestFailureBytes - std::min(longestFailureBytes, pending_.size())));
                return true;
            }
            pending_.append(part);
            pending_.erase(0, consume_(pending_));
            return true;
        } catch (...) {
            failure_ = std::current_exception();
            return false;
        }
    }

    void ThrowFailure() const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }
    // The bytes that no row took, or the body of a failed answer.
    const std::string& GetRest() const { return pending_; }

  private:
    const TConsume& consume_;
    std::string pending_;
    std::exception_ptr failure_;
};

std::size_t ConsumeNothing(std::string_view /*bytes*/) {
    return 0;
}

}  // namespace

TServerFailure ParseServerFailure(std::string_view body) {
    constexpr std::string_view start = "Code: ";
    constexpr std::string_view exception = "Exception: ";  // after "DB::" or "DB::Net"
    TServerFailure failure;
    if (body.starts_with(start)) {
        const std::string_view number = body.substr(start.size(), body.find_first_of(",.") - start.size());
        failure.code = NVORHOST::ParseNumber<int>(number).value_or(0);
        const auto place = body.find(exception);
        body.remove_prefix(place == std::string_view::npos ? 0 : place + exception.size());
        body = CutAtLast(CutAtLast(body, ", e.what() = "), " (version ");
    }
    failure.text = NVORHOST::ToShownText(NVORHOST::TrimBlanks(NVORHOST::SplitAt(body, '\n').first));
    return failure;
}

std::string QuoteText(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\0') {
            quoted += "\\0";  // a zero byte would end the statement
            continue;
        }
        if (c == '\'' || c == '\\') {
            quoted.push_back('\\');
        }
        quoted.push_back(c);
    }
    return quoted + "'";
}

std::string QuoteName(std::string_view name) {
    std::string quoted = "`";
    for (const char c : name) {
        if (c == '`' || c == '\\') {
            quoted.push_back('\\');
        }
        quoted.push_back(c);
    }
    return quoted + "`";
}

TClickHouseClient::TClickHouseClient(TClickHouseAddress address, std::unique_ptr<IHttp> http)
    : address_(std::move(address)), http_(std::move(http)), limit_(longestStatement) {}

void TClickHouseClient::Fail(const std::string& text, int code) const {
    const std::string number = code == 0 ? "" : " (code " + std::to_string(code) + ")";
    throw TClickHouseError("ClickHouse at " + address_.GetName() + ": " + text + number, code);
}

std::string TClickHouseClient::MakeUrl(const TStatementSettings& settings) const {
    std::string url = address_.GetSite();
    char separator = '?';
    for (const auto& [name, value] : settings) {
        url.append(1, separator).append(name).append("=").append(EncodeForUrl(value));
        separator = '&';
    }
    return url;
}

void TClickHouseClient::Post(const TStatementSettings& settings, std::string_view contentType,
                             std::string_view body, const TConsume& consume) {
    TAnswerReceiver receiver(consume);
    const THttpResult result =
        http_->Post({MakeUrl(settings), std::string(contentType), body, limit_},
                    [&](int status, std::string_view part) { return receiver.Take(status, part); });
    receiver.ThrowFailure();
    if (result.end != EHttpEnd::answered) {
        Fail(NVORHOST::ToShownText(result.failure), 0);
    }
    if (result.status != statusOk) {
        const TServerFailure failure = ParseServerFailure(receiver.GetRest());
        Fail(failure.text.empty() ? "HTTP status " + std::to_string(result.status) : failure.text,
             failure.code);
    }
    if (!receiver.GetRest().empty()) {
        Fail("the answer ends within a row", 0);
    }
}

void TClickHouseClient::Execute(std::string_view statement, const TStatementSettings& settings) {
    TStatementSettings all{{"database", address_.database}};
    all.insert(all.end(), settings.begin(), settings.end());
    const auto ignoreAnswer = [](std::string_view bytes) { return bytes.size(); };
    Post(all, plainType, statement, ignoreAnswer);
}

void TClickHouseClient::CreateDatabase() {
    Post({}, plainType, "CREATE DATABASE IF NOT EXISTS " + QuoteName(address_.database), &ConsumeNothing);
}

void TClickHouseClient::Insert(std::string_view target, std::string_view rows,
                               const TStatementSettings& settings) {
    if (rows.empty()) {
        return;
    }
    TStatementSettings all{{"database", address_.database},
                           {"query", "INSERT INTO " + std::string(target) + " FORMAT RowBinary"}};
    all.insert(all.end(), settings.begin(), settings.end());
    Post(all, rowsType, rows, &ConsumeNothing);
}

// The server collects the whole answer first: otherwise a failure in its middle would follow rows under the
// status of success.
void TClickHouseClient::SelectRows(std::string_view query, const std::optional<TTemporaryTable>& table,
                                   const TConsume& consume) {
    const std::string statement = std::string(query) + " FORMAT RowBinary";
    TStatementSettings settings{{"database", address_.database}, {"wait_end_of_query", "1"}};
    if (!table) {
        Post(settings, plainType, statement, consume);
        return;
    }
    settings.emplace_back("query", statement);
    settings.emplace_back(table->name + "_structure", table->columns);
    settings.emplace_back(table->name + "_format", "RowBinary");
    const std::string boundary = MakeBoundary(table->rows);
    Post(settings, "multipart/form-data; boundary=" + boundary, MakeForm(*table, boundary), consume);
}

std::string TClickHouseClient::SelectText(std::string_view query, std::string_view format,
                                          const TStatementSettings& settings) {
    TStatementSettings all{
        {"database", address_.database}, {"wait_end_of_query", "1"}, {"default_format", std::string(format)}};
    all.insert(all.end(), settings.begin(), settings.end());
    std::string text;
    Post(all, plainType, query, [&text](std::string_view bytes) {
        text.append(bytes);
        return bytes.size();
    });
    return text;
}

}  // namespace NFLEET
