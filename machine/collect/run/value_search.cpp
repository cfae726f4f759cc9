#include "machine/collect/run/value_search.h"

#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_system.h"
#include "text/ascii.h"
#include "text/find_row.h"
#include "text/hex.h"
#include "text/printable_text.h"
#include "text/trim.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

constexpr std::string_view smbiosPath = "/sys/firmware/dmi/tables/DMI";

// The status that a source gives to a property without a value.
struct TVerdict {
    EValueStatus status = EValueStatus::absent;
    std::string passedOver{};
};

constexpr EValueStatus unanswered[] = {EValueStatus::denied, EValueStatus::asleep, EValueStatus::timedOut,
                                       EValueStatus::unread};

bool IsUnanswered(EValueStatus status) {
    return std::ranges::find(unanswered, status) != std::end(unanswered);
}

// A source that could not be looked at may have the value, and counts more than one with a wrong value.
int RankOf(const TVerdict& verdict) {
    if (IsUnanswered(verdict.status)) {
        return 2;
    }
    return verdict.status == EValueStatus::absent ? 0 : 1;
}

bool HasUuidShape(std::string_view text) {
    constexpr std::size_t length = 36;
    constexpr std::size_t dashes[] = {8, 13, 18, 23};
    if (text.size() != length) {
        return false;
    }
    for (std::size_t i = 0; i < length; ++i) {
        const bool isDash = std::ranges::find(dashes, i) != std::end(dashes);
        if (isDash ? text[i] != '-' : !IsHexDigit(text[i])) {
            return false;
        }
    }
    return true;
}

// Units and fractions may follow the first digits.
bool StartsWithNumber(std::string_view text) {
    if (text.starts_with('-')) {
        text.remove_prefix(1);
    }
    return !text.empty() && IsDigit(text.front());
}

bool IsMalformed(ESourceForm form, std::string_view text) {
    switch (form) {
        case ESourceForm::any:
        case ESourceForm::text:
            return false;
        case ESourceForm::number:
            return !StartsWithNumber(text);
        case ESourceForm::uuid:
            return !HasUuidShape(text);
        case ESourceForm::date:
            return !ParseFirmwareDate(text);
    }
    return false;
}

TVerdict JudgeText(ESourceForm form, std::string_view content) {
    const std::string_view text = TrimBlanks(content);
    if (text.empty() || form == ESourceForm::any) {
        return {};
    }
    const bool isFiller = form != ESourceForm::number && IsPlaceholder(text);
    if (isFiller || (form == ESourceForm::uuid && IsPlaceholderUuid(text))) {
        return {EValueStatus::placeholder, ToPrintableText(text).text};
    }
    return IsMalformed(form, text) ? TVerdict{EValueStatus::malformed, ToPrintableText(text).text}
                                   : TVerdict{};
}

TVerdict JudgeTextField(const TSource& source, const TSmbiosStructure& structure) {
    const auto number = structure.GetFields().GetByte(source.offset);
    if (number.value_or(0) == 0) {
        return {};
    }
    if (const auto text = structure.GetText(source.offset)) {
        return JudgeText(source.form, *text);
    }
    return {EValueStatus::malformed,
            "text " + std::to_string(*number) + " of " + std::to_string(structure.GetTexts().size())};
}

TVerdict JudgeUuidField(const TSource& source, const TSmbiosStructure& structure) {
    constexpr std::size_t uuidBytes = 16;
    constexpr TSmbiosVersion anyVersion{2, 6};
    const auto bytes = structure.GetFields().GetRange(source.offset, uuidBytes);
    if (!bytes || FormatSmbiosUuid(*bytes, anyVersion)) {
        return {};
    }
    return {EValueStatus::placeholder, ToHex(*bytes)};
}

TVerdict JudgeField(const TSource& source, const TSmbiosStructure& structure) {
    switch (source.form) {
        case ESourceForm::text:
        case ESourceForm::date:
            return JudgeTextField(source, structure);
        case ESourceForm::uuid:
            return JudgeUuidField(source, structure);
        case ESourceForm::any:
        case ESourceForm::number:
            break;
    }
    return {};
}

// True for a pattern of places of any instance, which gives no verdict about one of them.
bool IsAnywhere(const TSource& source) {
    return source.name.find("**") != std::string_view::npos;
}

// Searches the sources of one instance.
class TSearch {
  public:
    TSearch(const TCommittedInstance& committed, const TSourceOutcomes& outcomes, const TSmbiosSource* smbios)
        : committed_(committed),
          outcomes_(outcomes),
          smbios_(smbios),
          properties_(committed.declaration->GetSources()) {}

    TValueCounts SetAll() {
        TValueCounts counts{};
        for (const TSourcedProperty& property : properties_) {
            TValueSource found = Describe(property);
            ++counts[static_cast<std::size_t>(found.status)];
            committed_.instance->SetSource(property.name, std::move(found));
        }
        return counts;
    }

    TValueCounts CountAll() const {
        TValueCounts counts{};
        for (const TSourcedProperty& property : properties_) {
            const bool isSet = committed_.instance->Find(property.name) != nullptr;
            const EValueStatus status =
                isSet ? EValueStatus::present : JudgeAll(property.sources.List(), /*depth=*/0).status;
            ++counts[static_cast<std::size_t>(status)];
        }
        return counts;
    }

    TValueSource Describe(const TSourcedProperty& property) const {
        TValueSource description;
        const std::vector<TSource> sources = property.sources.List();
        AddTexts(sources, description);
        if (committed_.instance->Find(property.name) != nullptr) {
            description.status = EValueStatus::present;
            AddGaps(sources, description);
        } else {
            TVerdict verdict = JudgeAll(sources, /*depth=*/0);
            description.status = verdict.status;
            description.passedOver = std::move(verdict.passedOver);
        }
        return description;
    }

  private:
    using TSources = std::vector<TSource>;

    // Several elements of an array may have one source.
    void AddTexts(const TSources& sources, TValueSource& description) const {
        for (const TSource& source : sources) {
            if (!AppliesToInstance(source)) {
                continue;
            }
            std::string text = MakeText(source);
            if (std::ranges::find(description.sources, text) == description.sources.end()) {
                description.sources.push_back(std::move(text));
            }
        }
    }

    void AddGaps(const TSources& sources, TValueSource& description) const {
        std::vector<std::string_view> elements;
        for (const TSource& source : sources) {
            const bool isNew = std::ranges::find(elements, source.element) == elements.end();
            if (!source.element.empty() && isNew && !HasElement(source.element)) {
                elements.push_back(source.element);
            }
        }
        for (const std::string_view element : elements) {
            TSources own;
            std::ranges::copy_if(sources, std::back_inserter(own),
                                 [&](const TSource& source) { return source.element == element; });
            const TVerdict verdict = JudgeAll(own, /*depth=*/0);
            if (verdict.status != EValueStatus::absent) {
                description.gaps.push_back(DescribeGap(element, verdict));
            }
        }
    }

    static std::string DescribeGap(std::string_view element, const TVerdict& verdict) {
        return std::string(element) + ": " + std::string(NameValueStatus(verdict.status)) +
               (verdict.passedOver.empty() ? "" : " \"" + verdict.passedOver + "\"");
    }

    // The names of the elements are in another array.
    bool HasElement(std::string_view element) const {
        const TCIMValue* const names = committed_.instance->Find("IdentifyingDescriptions");
        if (names == nullptr || names->IsNull()) {
            return false;
        }
        const auto& elements = static_cast<const TCIMValue::TElements&>(*names);
        return std::ranges::any_of(
            elements, [&](const TCIMValue& each) { return !each.IsNull() && std::string(each) == element; });
    }

    bool HasStructure(std::uint8_t type) const {
        const TSmbiosStructure* const own = committed_.place.structure;
        return own != nullptr && own->GetType() == type;
    }

    bool AppliesToInstance(const TSource& source) const {
        switch (source.kind) {
            case ESourceKind::smbios:
                return !source.isOwn || HasStructure(source.type);
            case ESourceKind::file:
                return !source.isOwn || !committed_.place.folder.empty();
            case ESourceKind::udev:
                return !FindUdevRecord().empty();
            case ESourceKind::call:
            case ESourceKind::property:
            case ESourceKind::constant:
            case ESourceKind::none:
                break;
        }
        return true;
    }

    // The number of a block device in its folder leads to its record.
    std::string FindUdevRecord() const {
        if (!committed_.place.udevRecord.empty()) {
            return committed_.place.udevRecord;
        }
        const auto number = outcomes_.Find(committed_.place.folder + "/dev");
        const std::string_view text = number ? TrimBlanks(number->text) : std::string_view();
        return text.empty() ? std::string() : "/run/udev/data/b" + std::string(text);
    }

    std::string MakePath(const TSource& source) const {
        if (source.kind == ESourceKind::udev) {
            return FindUdevRecord();
        }
        return (source.isOwn ? committed_.place.folder : "") + std::string(source.name);
    }

    std::string MakeText(const TSource& source) const {
        const std::string detail(source.detail);
        switch (source.kind) {
            case ESourceKind::udev:
                return MakePath(source) + " " + std::string(source.name);
            case ESourceKind::file:
                return MakePath(source) + (detail.empty() ? "" : " " + detail);
            case ESourceKind::call:
                return "call " + std::string(source.name) + (detail.empty() ? "" : " ") +
                       (detail == "@" ? committed_.place.folder : detail);
            case ESourceKind::smbios:
            case ESourceKind::property:
            case ESourceKind::constant:
            case ESourceKind::none:
                break;
        }
        return std::string(source.isOwn ? source.text.substr(1) : source.text);
    }

    const TSmbiosStructure* FindStructure(std::uint8_t type) const {
        if (HasStructure(type)) {
            return committed_.place.structure;
        }
        return smbios_ == nullptr ? nullptr : smbios_->FindFirst(type);
    }

    // Returns nullopt for a source that was not looked at because an earlier one had the value, or because it
    // does not apply to the instance.
    std::optional<TVerdict> Judge(const TSource& source, int depth) const {
        if (!AppliesToInstance(source)) {
            return std::nullopt;
        }
        switch (source.kind) {
            case ESourceKind::smbios:
                return JudgeStructure(source);
            case ESourceKind::file:
            case ESourceKind::udev:
                return JudgeFile(source);
            case ESourceKind::call:
                return JudgeCall(source);
            case ESourceKind::property:
                return JudgeProperty(source, depth);
            case ESourceKind::constant:
            case ESourceKind::none:
                break;
        }
        return TVerdict{};
    }

    std::optional<TVerdict> JudgeStructure(const TSource& source) const {
        const auto table = outcomes_.Find(smbiosPath);
        if (!table || table->status != EValueStatus::present) {
            return table ? std::optional(TVerdict{table->status}) : std::nullopt;
        }
        const TSmbiosStructure* const structure = FindStructure(source.type);
        return structure == nullptr ? TVerdict{} : JudgeField(source, *structure);
    }

    std::optional<TVerdict> JudgeFile(const TSource& source) const {
        const bool isName = source.isOwn && source.name.empty() && source.detail.empty();
        if (isName || !HasKind(source)) {
            return TVerdict{};
        }
        const auto outcome = IsAnywhere(source) ? std::nullopt : outcomes_.Find(MakePath(source));
        if (!outcome || outcome->status != EValueStatus::present) {
            return outcome ? std::optional(TVerdict{outcome->status}) : std::nullopt;
        }
        if (source.detail == "if awake") {
            return TVerdict{IsAwake() ? EValueStatus::absent : EValueStatus::asleep};
        }
        const bool isWhole = source.detail.empty() && source.kind == ESourceKind::file;
        return isWhole ? JudgeText(source.form, outcome->text) : TVerdict{};
    }

    // True unless the detail of a source, such as "if DEVTYPE=vlan", is a line that the `uevent` of the
    // instance lacks: a source of one kind of devices gives no verdict about the others.
    bool HasKind(const TSource& source) const {
        constexpr std::string_view condition = "if ";
        if (!source.detail.starts_with(condition) || source.detail.find('=') == std::string_view::npos) {
            return true;
        }
        const auto uevent = outcomes_.Find(committed_.place.folder + "/uevent");
        return uevent && uevent->text.find(source.detail.substr(condition.size())) != std::string::npos;
    }

    // By the power state that the collector read; kernels before 5.11 have another file.
    bool IsAwake() const {
        const auto read = [&](const char* name) {
            const auto outcome = outcomes_.Find(committed_.place.folder + name);
            return outcome ? std::string(TrimBlanks(outcome->text)) : std::string();
        };
        const std::string state = read("/power_state");
        return state.empty() ? read("/power/runtime_status") != "suspended" : state == "D0";
    }

    // A call for a path that did not answer is among the outcomes like an access to the path.
    std::optional<TVerdict> JudgeCall(const TSource& source) const {
        const auto outcome = source.detail == "@" ? outcomes_.Find(committed_.place.folder) : std::nullopt;
        const bool isLate = outcome && outcome->status == EValueStatus::timedOut;
        return TVerdict{isLate ? EValueStatus::timedOut : EValueStatus::absent};
    }

    std::optional<TVerdict> JudgeProperty(const TSource& source, int depth) const {
        constexpr int deepest = 4;  // properties that are made from each other would not end
        const auto* const property = FindRow(properties_, &TSourcedProperty::name, source.name);
        if (property == nullptr || depth == deepest || committed_.instance->Find(source.name) != nullptr) {
            return TVerdict{};
        }
        return JudgeAll(property->sources.List(), depth + 1);
    }

    TVerdict JudgeAll(const TSources& sources, int depth) const {
        TVerdict worst;
        for (auto first = sources.begin(); first != sources.end();) {
            const auto end =
                std::find_if(first + 1, sources.end(), [](const TSource& each) { return !each.isCopy; });
            TVerdict verdict = JudgeCopies({first, end}, depth);
            if (RankOf(verdict) > RankOf(worst)) {
                worst = std::move(verdict);
            }
            first = end;
        }
        return worst;
    }

    TVerdict JudgeCopies(std::span<const TSource> copies, int depth) const {
        TVerdict worst;
        for (const TSource& copy : copies) {
            auto verdict = Judge(copy, depth);
            if (verdict && !IsUnanswered(verdict->status)) {
                return std::move(*verdict);
            }
            if (verdict && RankOf(*verdict) > RankOf(worst)) {
                worst = std::move(*verdict);
            }
        }
        return worst;
    }

    const TCommittedInstance& committed_;
    const TSourceOutcomes& outcomes_;
    const TSmbiosSource* smbios_;
    std::vector<TSourcedProperty> properties_;
};

// The table was read by a collector, if it could be read.
const TSmbiosSource* FindSmbios(TCollection& collection, const TSourceOutcomes& outcomes) {
    const auto table = outcomes.Find(smbiosPath);
    return table && table->status == EValueStatus::present ? &GetSmbios(collection) : nullptr;
}

// The properties that are keys, of which a class has one.
constexpr std::string_view keys[] = {"DeviceID", "Tag", "InstanceID", "Name", "Antecedent", "ElementName"};

}  // namespace

void SetClassSource(const IClassDeclaration& declaration, const TSourceOutcomes& outcomes,
                    TMemoryClass& target) {
    const auto properties = declaration.GetSources();
    for (const std::string_view key : keys) {
        if (const auto* const property = FindRow(properties, &TSourcedProperty::name, key)) {
            const TCommittedInstance none{&declaration, target.NewInstance(), {}};
            TValueSource source = TSearch(none, outcomes, /*smbios=*/nullptr).Describe(*property);
            if (IsUnanswered(source.status)) {
                target.SetSource(std::move(source));
            }
            return;
        }
    }
}

TValueCounts SetValueSources(TCollection& collection, const TSourceOutcomes& outcomes) {
    TValueCounts counts{};
    const std::vector<TCommittedInstance> instances = collection.TakeCommitted();
    const TSmbiosSource* const smbios = instances.empty() ? nullptr : FindSmbios(collection, outcomes);
    for (const TCommittedInstance& committed : instances) {
        TSearch search(committed, outcomes, smbios);
        const TValueCounts more = collection.KeepsSources() ? search.SetAll() : search.CountAll();
        std::ranges::transform(counts, more, counts.begin(), std::plus<>());
    }
    return counts;
}

}  // namespace NVORHOST
