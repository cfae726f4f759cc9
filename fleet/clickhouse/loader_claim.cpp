#include "fleet/clickhouse/loader_claim.h"

#include <algorithm>
#include <random>
#include <thread>

namespace NFLEET {
namespace {

using TClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds shortestPause(10);
constexpr std::chrono::milliseconds longestPause(100);

TDigest MakeRandomDigest() {
    std::random_device random;
    TDigest digest;
    std::ranges::generate(digest.bytes, [&random] { return static_cast<std::uint8_t>(random()); });
    return digest;
}

void PauseRandomly() {
    static thread_local std::minstd_rand random{std::random_device{}()};
    std::uniform_int_distribution<long> milliseconds(shortestPause.count(), longestPause.count());
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
}

// Claims have even numbers, and become odd when they are withdrawn.
bool IsWithdrawn(TChangeNumber number) {
    return number % 2 != 0;
}

struct TClaimRow {
    TDigest loader;
    TChangeNumber number;
    bool isExpired;
};

}  // namespace

TLoaderClaim::TLoaderClaim(TClickHouseClient& client, TClaimTimes times)
    : client_(client), times_(times), loader_(MakeRandomDigest()) {}

void TLoaderClaim::Write(TChangeNumber number) {
    written_ = TClock::now();
    client_.Execute("INSERT INTO loader_rows (loader, number, time) SELECT toFixedString(unhex('" +
                        ToText(loader_) + "'), 16), toUInt64(" + std::to_string(number) +
                        "), toUInt32(now())",
                    {{"insert_distributed_sync", "1"}});
}

TLoaderClaim::TOthers TLoaderClaim::ReadOthers() {
    TOthers others;
    client_.Select(
        "SELECT loader, max(number), toUInt8(max(time) + " + std::to_string(times_.expiry.count()) +
            " < toUInt32(now())) FROM loader_rows GROUP BY loader",
        [](TRowBinaryReader& reader) {
            TClaimRow row{};
            row.loader = DecodeDigest(reader);
            row.number = reader.Number<TChangeNumber>();
            row.isExpired = reader.Number<std::uint8_t>() != 0;
            return row;
        },
        [&](const TClaimRow& row) {
            if (row.loader != loader_) {
                others.highest = std::max(others.highest, row.number);
                others.areActive = others.areActive || !(IsWithdrawn(row.number) || row.isExpired);
            }
        });
    return others;
}

bool TLoaderClaim::TryAcquire() {
    const TOthers before = ReadOthers();
    if (before.areActive) {
        return false;
    }
    lastNumber_ = (std::max(before.highest, lastNumber_) | 1) + 1;
    Write(lastNumber_);
    const TOthers after = ReadOthers();
    if (!after.areActive && after.highest < lastNumber_) {
        return true;
    }
    Write(++lastNumber_);
    return false;
}

void TLoaderClaim::Acquire() {
    const auto end = TClock::now() + times_.patience;
    while (!TryAcquire()) {
        if (TClock::now() > end) {
            throw TStoreError("another loader has been writing to " + client_.GetAddress().GetName() +
                              " for " + std::to_string(times_.patience.count()) + " seconds");
        }
        PauseRandomly();
    }
    isHeld_ = true;
}

// No other loader claims the store before this claim expires.
void TLoaderClaim::Renew() {
    const auto age = TClock::now() - written_;
    if (age < times_.expiry / 3) {
        return;
    }
    if (age >= times_.expiry && ReadOthers().highest > lastNumber_) {
        isHeld_ = false;
        throw TStoreError("another loader has claimed " + client_.GetAddress().GetName() +
                          " in the middle of a batch that took too long");
    }
    Write(lastNumber_);
}

void TLoaderClaim::Release() {
    if (isHeld_) {
        isHeld_ = false;
        Write(++lastNumber_);
    }
}

}  // namespace NFLEET
