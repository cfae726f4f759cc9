#include "sending/verdict.h"

namespace NVORHOST {
namespace {

struct TStatusRow {
    int first;
    int last;
    EVerdict verdict;
    const char* meaning;  // before the number of the status
};

// The first row that contains a status applies.
constexpr TStatusRow statusRows[] = {
    {200, 299, EVerdict::arrived, "accepted"},
    {300, 399, EVerdict::hopeless, "the server redirects to another place, which is not followed"},
    {408, 408, EVerdict::retry, "the server has waited too long"},
    {429, 429, EVerdict::retry, "the server has too many requests"},
    {400, 499, EVerdict::refused, "the server refuses it"},
    {507, 507, EVerdict::retry, "the server has no space left"},
    {500, 599, EVerdict::retry, "the server has failed"},
};
constexpr TStatusRow otherStatus{0, 0, EVerdict::retry, "the server answers with an invalid status"};

struct TEndRow {
    ETransferEnd end;
    EVerdict verdict;
};

constexpr TEndRow endRows[] = {
    {ETransferEnd::unreachable, EVerdict::retry},
    {ETransferEnd::untrusted, EVerdict::hopeless},
    {ETransferEnd::impossible, EVerdict::hopeless},
};

const TStatusRow& RowOf(int status) {
    for (const TStatusRow& row : statusRows) {
        if (row.first <= status && status <= row.last) {
            return row;
        }
    }
    return otherStatus;
}

}  // namespace

EVerdict Judge(const TTransferResult& result) {
    for (const TEndRow& row : endRows) {
        if (row.end == result.end) {
            return row.verdict;
        }
    }
    return RowOf(result.status).verdict;
}

std::string DescribeResult(const TTransferResult& result) {
    if (result.end != ETransferEnd::answered) {
        return result.failure;
    }
    return std::string(RowOf(result.status).meaning) + " (HTTP status " + std::to_string(result.status) + ")";
}

}  // namespace NVORHOST
