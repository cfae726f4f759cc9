#include "lint/write/finding_writer.h"

#include "lint/run/check_list.h"
#include "text/shown_text.h"
#include "text/utf8.h"

#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <algorithm>
#include <string_view>

namespace NLINT {
namespace {

constexpr ESeverity severities[] = {ESeverity::error, ESeverity::warning, ESeverity::note};

std::size_t CountOf(const std::vector<TFinding>& findings, ESeverity severity) {
    return static_cast<std::size_t>(std::ranges::count_if(
        findings, [&](const TFinding& finding) { return GetCheckText(finding.check).severity == severity; }));
}

std::string Count(std::size_t number, std::string_view word) {
    return std::to_string(number) + " " + std::string(word) + (number == 1 ? "" : "s");
}

void WriteEvidence(const TEvidence& evidence, std::ostream& out) {
    out << "    " << NVORHOST::MakeVisible(evidence.value) << "  (" << NVORHOST::MakeVisible(evidence.source)
        << ")\n";
}

using TJson = rapidjson::PrettyWriter<rapidjson::OStreamWrapper>;

void WriteText(TJson& json, const char* name, std::string_view text) {
    json.Key(name);
    const std::string wellFormed = NVORHOST::ReplaceMalformedUtf8(text).value_or(std::string(text));
    json.String(wellFormed.data(), static_cast<rapidjson::SizeType>(wellFormed.size()));
}

void WriteEvidence(TJson& json, const TEvidence& evidence) {
    json.StartObject();
    WriteText(json, "value", evidence.value);
    WriteText(json, "source", evidence.source);
    json.EndObject();
}

void WriteFinding(TJson& json, const TFinding& finding) {
    const TCheckText& check = GetCheckText(finding.check);
    json.StartObject();
    WriteText(json, "check", finding.check);
    WriteText(json, "severity", GetSeverityName(check.severity));
    WriteText(json, "subject", finding.subject);
    WriteText(json, "compares", check.compares);
    json.Key("evidence");
    json.StartArray();
    WriteEvidence(json, finding.first);
    WriteEvidence(json, finding.second);
    json.EndArray();
    WriteText(json, "mend", check.mend);
    json.EndObject();
}

}  // namespace

void WriteFindingText(const std::string& source, const std::vector<TFinding>& findings, std::ostream& out) {
    for (const TFinding& finding : findings) {
        const TCheckText& check = GetCheckText(finding.check);
        out << GetSeverityName(check.severity) << " " << check.id << ": "
            << NVORHOST::MakeVisible(finding.subject) << '\n';
        WriteEvidence(finding.first, out);
        WriteEvidence(finding.second, out);
        out << "    " << check.mend << ".\n\n";
    }
    out << NVORHOST::MakeVisible(source) << ": ";
    std::string_view separator;
    for (const ESeverity severity : severities) {
        out << separator << Count(CountOf(findings, severity), GetSeverityName(severity));
        separator = ", ";
    }
    out << '\n';
}

void WriteFindingJson(const std::string& source, const std::vector<TFinding>& findings, std::ostream& out) {
    rapidjson::OStreamWrapper stream(out);
    TJson json(stream);
    json.StartObject();
    WriteText(json, "source", source);
    json.Key("findings");
    json.StartArray();
    for (const TFinding& finding : findings) {
        WriteFinding(json, finding);
    }
    json.EndArray();
    json.EndObject();
    out << '\n';
}

}  // namespace NLINT
