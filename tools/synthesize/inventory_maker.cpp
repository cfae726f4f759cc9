#include "tools/synthesize/inventory_maker.h"

#include "machine/collect/run/collection_run.h"
#include "tools/synthesize/made_machine.h"
#include "vorhost/cimxml/gzip_output.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/run/run_environment.h"

#include <boost/make_shared.hpp>

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace NSYNTHESIS {
namespace {

using NKELVOR20::TCIMDateTime;
using NVORHOST::TMemoryNamespace;

std::chrono::year_month_day GetDate(const TFleetDescription& fleet, std::uint64_t day) {
    return fleet.firstDay + std::chrono::days(static_cast<std::int64_t>(day) - 1);
}

std::string FormatDate(const std::chrono::year_month_day& date) {
    std::array<char, 16> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return {text.data(), static_cast<std::size_t>(length)};
}

// The machines collect at different minutes of the same hour.
TCIMDateTime MakeTime(const std::chrono::year_month_day& date, std::uint64_t machine) {
    TCIMDateTime::TFields fields;
    fields.year = static_cast<std::uint16_t>(static_cast<int>(date.year()));
    fields.month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month()));
    fields.day = static_cast<unsigned>(date.day());
    fields.hour = 3;
    fields.minute = static_cast<std::uint16_t>(machine % 60);
    return TCIMDateTime(fields);
}

void WriteSnapshot(const TMemoryNamespace& collected, const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary);
    NVORHOST::WriteCompressed(file, [&](std::ostream& text) { SaveNamespace(collected, text); });
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

boost::shared_ptr<TMemoryNamespace> Collect(const TMachineState& state, std::uint64_t day,
                                            const TCIMDateTime& time) {
    auto collected = boost::make_shared<TMemoryNamespace>();
    const NVORHOST::TMachine machine = MakeMachine(state, day);
    (void)NVORHOST::CollectAll(
        {machine.files, machine.calls, *collected, time});  // gaps cannot occur in memory
    return collected;
}

}  // namespace

void TInventoryMaker::Write(const TFleetDescription& fleet, const TMachineState& state, std::uint64_t day,
                            bool hasSnapshot, const std::filesystem::path& folder) {
    const auto date = GetDate(fleet, day);
    const std::filesystem::path target = folder / MakeUuid(state) / FormatDate(date);
    std::filesystem::create_directories(target);
    const TCIMDateTime time = MakeTime(date, state.number);
    NVORHOST::TRunEnvironment environment(
        {.localTime = time, .identity = "K0000001", .reachability = NVORHOST::EReachability::no});
    const auto collected = Collect(state, day, time);
    environment.SetCollected(collected);
    if (hasSnapshot) {
        WriteSnapshot(*collected, target / "snapshot.xml.gz");
    }
    std::filesystem::current_path(target);  // the plug-in writes to the working directory
    const auto resultClass = collected->FindClass("KELSG_CADAT");
    std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>> results{resultClass};
    plugin_.GetData(collected, results);
    if (resultClass->GetInstances().empty() || !std::filesystem::exists("systeminformation.xml.gz")) {
        throw std::runtime_error("the plug-in made no documents in " + target.string());
    }
}

}  // namespace NSYNTHESIS
