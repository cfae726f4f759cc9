#include "fleet/ask/sql_answer.h"

#include "text/hex.h"
#include "text/utf8.h"

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace NFLEET {
namespace {

TCell MakeCell(const TSqlValue& value) {
    return std::visit(
        [](const auto& content) -> TCell {
            if constexpr (std::is_same_v<std::decay_t<decltype(content)>, std::string>) {
                const bool isText =
                    !NVORHOST::ReplaceMalformedUtf8(content) && content.find('\0') == std::string::npos;
                return isText ? content : NVORHOST::ToHex(content);
            } else {
                return content;
            }
        },
        value);
}

class TRowsToAnswer final : public ISqlRows {
  public:
    explicit TRowsToAnswer(TAnswer& answer) : answer_(answer) {}

    void BeginRows(const std::vector<std::string>& columns) override {
        for (const std::string& column : columns) {
            answer_.columns.push_back({column, column});
        }
    }
    bool AddRow(const std::vector<TSqlValue>& values) override {
        std::vector<TCell>& cells = answer_.rows.emplace_back();
        for (const TSqlValue& value : values) {
            cells.push_back(MakeCell(value));
        }
        return true;
    }

  private:
    TAnswer& answer_;
};

}  // namespace

TAnswer AskSql(IFleetStore& store, std::string_view query) {
    TAnswer answer{.question = "sql", .columns = {}, .emptyText = "no rows"};
    TRowsToAnswer rows(answer);
    store.RunSql(query, rows);
    return answer;
}

}  // namespace NFLEET
