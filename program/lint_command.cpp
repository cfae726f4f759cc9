#include "program/lint_command.h"

#include "inventory/saved/namespace_resources.h"
#include "lint/resources/resource_checks.h"
#include "lint/run/check_list.h"
#include "lint/run/finding_collector.h"
#include "lint/write/finding_writer.h"
#include "machine/supervision/machine_door.h"
#include "program/inventory_source.h"
#include "program/namespace_source.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/run_environment.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::TResource;
using NLINT::TFinding;

class TKeepResources final : public NINVENTORY::IDocumentEvents {
  public:
    void BeginDocument(const NINVENTORY::TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(TResource&& resource) override { resources.push_back(std::move(resource)); }

    std::vector<TResource> resources;
};

// The findings of one source, and what was missing of a machine.
struct TLinted {
    std::string source;
    std::vector<TFinding> findings;
    TCollectOutcome outcome;
};

void AddResourceFindings(std::vector<TResource> resources, TLinted& linted) {
    const NLINT::TResourceIndex index(std::move(resources));
    std::ranges::move(NLINT::RunChecks(NLINT::GetResourceChecks(), index),
                      std::back_inserter(linted.findings));
}

TLinted LintInventory(const std::string& path) {
    TLinted linted;
    TKeepResources events;
    PassInventory(
        path, [&](const std::string& name) { linted.source = name; }, events);
    AddResourceFindings(std::move(events.resources), linted);
    return linted;
}

TLinted LintMachine(TSourceOptions options) {
    RequireProcFileSystem();
    options.machine.extraCollectors = std::span(&NLINT::findingCollector, 1);
    const TNamespaceSource source = ObtainNamespace(options);
    TLinted linted{source.origin, NLINT::GetFindings(*source.collected), source.outcome};
    TKeepResources events;
    PassResources(*source.collected, {}, events);
    AddResourceFindings(std::move(events.resources), linted);
    return linted;
}

TLinted LintSource(const std::string& path, TSourceOptions options) {
    if (!IsMachineTree(path)) {
        return LintInventory(path);
    }
    options.machine.sysroot = path;
    return LintMachine(std::move(options));
}

bool HasFindingOf(const std::vector<TFinding>& findings, NLINT::ESeverity least) {
    return std::ranges::any_of(findings, [&](const TFinding& finding) {
        return NLINT::GetCheckText(finding.check).severity >= least;
    });
}

}  // namespace

ELintStatus RunLint(const TLintOptions& options, std::ostream& out) {
    const TLogSinks sinks(options.machine.log);
    const TRunEnvironment environment({.localTime = options.machine.machine.localTime});
    TLinted linted =
        options.source ? LintSource(*options.source, options.machine) : LintMachine(options.machine);
    const auto findings = NLINT::SelectFindings(std::move(linted.findings), options.checks);
    if (options.isJson) {
        NLINT::WriteFindingJson(linted.source, findings, out);
    } else {
        NLINT::WriteFindingText(linted.source, findings, out);
    }
    // Gaps are part of the text for people, and must not disturb JSON.
    PrintOutcome(linted.outcome, options.isJson ? std::cerr : out);
    if (HasFindingOf(findings, options.failOn)) {
        return eLintFindings;
    }
    return options.machine.isStrict && linted.outcome.HasGaps() ? eLintGaps : eLintClean;
}

}  // namespace NVORHOST
