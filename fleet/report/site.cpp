#include "fleet/report/site.h"

#include "fleet/ask/machine_list.h"
#include "text/ascii.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

std::vector<TModel> ListModels(const std::vector<TSiteMachine>& machines) {
    std::map<std::string, TModel> byName;
    std::map<std::string, std::set<std::string>> vendors;
    for (std::size_t i = 0; i < machines.size(); ++i) {
        const TMachineFacts& facts = machines[i].machine.facts;
        TModel& model = byName[facts.model];
        model.name = facts.model;
        model.machines.push_back(i);
        if (!facts.vendor.empty()) {
            vendors[facts.model].insert(facts.vendor);
        }
    }
    std::vector<TModel> models;
    for (auto& [name, model] : byName) {
        model.vendors.assign(vendors[name].begin(), vendors[name].end());
        models.push_back(std::move(model));
    }
    std::ranges::stable_sort(models, [](const TModel& left, const TModel& right) {
        return std::tuple(left.name.empty(), right.machines.size()) <
               std::tuple(right.name.empty(), left.machines.size());
    });
    return models;
}

}  // namespace

TSite MakeSite(std::vector<TMachine> machines, std::vector<TOutlier> outliers, TSeconds now) {
    TSite site;
    site.now = now;
    for (TMachine& machine : machines) {
        site.newest = std::max(site.newest, machine.last);
        std::string name = NameMachine(machine);
        site.machines.push_back({.machine = std::move(machine), .name = std::move(name)});
    }
    std::ranges::sort(site.machines, {}, [](const TSiteMachine& each) {
        return std::tie(each.name, each.machine.key, each.machine.id);
    });
    for (std::size_t i = 0; i < site.machines.size(); ++i) {
        site.indices.emplace(site.machines[i].machine.id, i);
        if (site.IsStale(site.machines[i])) {
            site.stale.push_back(i);
        }
    }
    std::ranges::stable_sort(site.stale, {}, [&](std::size_t i) { return site.machines[i].machine.last; });
    site.models = ListModels(site.machines);
    for (const TOutlier& outlier : outliers) {
        ++site.machines[site.indices.at(outlier.machine.id)].outliers;
    }
    site.outliers = std::move(outliers);
    return site;
}

std::string NormalizeIdentity(std::string_view identity) {
    std::string normalized;
    for (const char c : identity) {
        const bool isSeparator = c == ' ' || c == '-' || c == ':' || c == '.' || c == '_' || c == '/';
        if (!isSeparator) {
            normalized += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    return normalized;
}

std::string CountOf(std::size_t count, std::string_view singular, std::string_view plural) {
    return std::to_string(count) + " " + std::string(count == 1 ? singular : plural);
}

}  // namespace NFLEET
