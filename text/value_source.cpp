#include "text/value_source.h"

#include "text/find_row.h"

namespace NVORHOST {
namespace {

struct TStatusRow {
    EValueStatus status;
    std::string_view word;
    std::string_view remedy;
};

constexpr TStatusRow statusRows[] = {
    {EValueStatus::present, "present", ""},
    {EValueStatus::absent, "absent", ""},
    {EValueStatus::denied, "denied", "needs root"},
    {EValueStatus::asleep, "asleep", "needs --wake"},
    {EValueStatus::timedOut, "timed out", "needs more time"},
    {EValueStatus::unread, "unread", ""},
    {EValueStatus::malformed, "malformed", ""},
    {EValueStatus::placeholder, "placeholder", ""},
};

}  // namespace

std::string_view NameValueStatus(EValueStatus status) {
    return FindRow(statusRows, &TStatusRow::status, status)->word;
}

std::optional<EValueStatus> FindValueStatus(std::string_view word) {
    return FindCell(statusRows, &TStatusRow::word, word, &TStatusRow::status);
}

std::string_view GetValueRemedy(EValueStatus status) {
    return FindRow(statusRows, &TStatusRow::status, status)->remedy;
}

}  // namespace NVORHOST
