// Plug-ins read every property of every instance by name, and many of these properties are missing.
// GetProperty therefore does only one lookup in the class and a short scan, and throws from a frame with
// nothing to unwind.
#include "vorhost/model/memory_namespace.h"

#include "host/vor_exception.h"
#include "vorhost/model/class_names.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {

using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

std::uint64_t NameBit(std::uint32_t nameId) {
    return std::uint64_t{1} << (nameId % 64);
}

}  // namespace

TMemoryProperty::TMemoryProperty(TCIMValue value) : value_(std::move(value)) {}
TMemoryProperty::TMemoryProperty(TMemoryProperty&& other) noexcept = default;
TMemoryProperty::~TMemoryProperty() = default;

TCIMValue::TCIMType TMemoryProperty::GetType(TOptionsMap /*options*/) {
    return value_.GetType();
}

const TCIMValue& TMemoryProperty::GetValue(TOptionsMap /*options*/) {
    return value_;
}

bool TMemoryProperty::IsNull(TOptionsMap /*options*/) {
    return value_.IsNull();
}

TMemoryInstance::TMemoryInstance(boost::weak_ptr<TMemoryClass> owner, boost::shared_ptr<TClassNames> names)
    : owner_(std::move(owner)), names_(std::move(names)) {}
TMemoryInstance::~TMemoryInstance() = default;

void TMemoryInstance::CommitInstance(TOptionsMap /*options*/) {
    if (committed_) {
        return;
    }
    const auto owner = owner_.lock();
    if (owner == nullptr) {
        throw TVORException(TVORStatusCode::classNotFound);
    }
    PackProperties();
    owner->instances_.push_back(shared_from_this());
    committed_ = true;
}

// Moves all properties of a committed instance to one block with one reference count, which takes less memory
// and time (docs/decisions/0003).
void TMemoryInstance::PackProperties() {
    entries_.shrink_to_fit();
    const auto block = boost::make_shared<std::vector<TMemoryProperty>>();
    block->reserve(entries_.size());
    for (TEntry& entry : entries_) {
        if (entry.property.unique()) {  // a property with other handles stays where it is
            block->push_back(std::move(*entry.property));
            entry.property = boost::shared_ptr<TMemoryProperty>(block, &block->back());
        }
    }
}

boost::shared_ptr<ICIMProperty> TMemoryInstance::GetProperty(const std::string& name,
                                                             TOptionsMap /*options*/) {
    const boost::shared_ptr<TMemoryProperty>* property = nullptr;
    const std::uint32_t nameId = names_->Find(name);
    if (nameId != TClassNames::notFound) {
        const TEntry* entry = FindEntry(nameId);
        property = entry != nullptr ? &entry->property : &names_->Get(nameId).unset;
    }
    if (property == nullptr || *property == nullptr) {
        throw TVORException(TVORStatusCode::propertyNotFound);
    }
    return *property;
}

void TMemoryInstance::SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap /*options*/) {
    Set(name, value);
}

void TMemoryInstance::Set(std::string_view name, TCIMValue value) {
    const std::uint32_t nameId = names_->Intern(name);
    const auto& declared = names_->Get(nameId).unset;
    if (declared != nullptr) {
        const TCIMValue& unset = declared->GetValue({});
        if (unset.GetType() != value.GetType() || unset.IsArray() != value.IsArray()) {
            throw TVORException(TVORStatusCode::typeMismatch);
        }
    }
    auto property = boost::make_shared<TMemoryProperty>(std::move(value));
    if (TEntry* entry = FindEntry(nameId)) {
        entry->property = std::move(property);
    } else {
        entries_.push_back({nameId, std::move(property)});
        setNames_ |= NameBit(nameId);
    }
}

const TCIMValue* TMemoryInstance::Find(std::string_view name) const {
    const std::uint32_t nameId = names_->Find(name);
    const TEntry* entry = nameId == TClassNames::notFound ? nullptr : FindEntry(nameId);
    return entry == nullptr ? nullptr : &entry->property->GetValue({});
}

std::vector<TPropertyView> TMemoryInstance::GetProperties() const {
    std::vector<TPropertyView> properties;
    properties.reserve(entries_.size());
    for (const auto& entry : entries_) {
        properties.push_back({names_->Get(entry.nameId).spelling, entry.property->GetValue({})});
    }
    return properties;
}

void TMemoryInstance::SetSource(std::string_view name, TValueSource source) {
    const std::uint32_t nameId = names_->Intern(name);
    if (sources_ == nullptr) {
        sources_ = std::make_unique<std::vector<TSourceEntry>>();
    }
    const auto found = std::ranges::find(*sources_, nameId, &TSourceEntry::nameId);
    if (found != sources_->end()) {
        found->source = std::move(source);
    } else {
        sources_->push_back({nameId, std::move(source)});
    }
}

const TValueSource* TMemoryInstance::FindSource(std::string_view name) const {
    const std::uint32_t nameId = names_->Find(name);
    if (nameId == TClassNames::notFound || sources_ == nullptr) {
        return nullptr;
    }
    const auto found = std::ranges::find(*sources_, nameId, &TSourceEntry::nameId);
    return found == sources_->end() ? nullptr : &found->source;
}

std::vector<TSourceView> TMemoryInstance::GetSources() const {
    std::vector<TSourceView> views;
    if (sources_ != nullptr) {
        for (const TSourceEntry& entry : *sources_) {
            views.push_back({names_->Get(entry.nameId).spelling, entry.source});
        }
    }
    return views;
}

const TMemoryInstance::TEntry* TMemoryInstance::FindEntry(std::uint32_t nameId) const {
    if ((setNames_ & NameBit(nameId)) == 0) {
        return nullptr;
    }
    // Most instances of a class are filled in the same order, some with gaps, so the index of an entry is
    // usually the number of its name or a little less.
    const auto expected =
        entries_.begin() + std::min<std::ptrdiff_t>(nameId + std::ptrdiff_t{1}, std::ssize(entries_));
    for (auto entry = expected; entry != entries_.begin();) {
        if ((--entry)->nameId == nameId) {
            return &*entry;
        }
    }
    const auto entry = std::find_if(expected, entries_.end(),
                                    [nameId](const auto& candidate) { return candidate.nameId == nameId; });
    return entry == entries_.end() ? nullptr : &*entry;
}

TMemoryInstance::TEntry* TMemoryInstance::FindEntry(std::uint32_t nameId) {
    return const_cast<TEntry*>(std::as_const(*this).FindEntry(nameId));  // NOLINT(*-const-cast): own member
}

TMemoryClass::TMemoryClass(std::string name, std::vector<TPropertyDeclaration> declarations)
    : name_(std::move(name)), names_(boost::make_shared<TClassNames>()) {
    for (auto& declaration : declarations) {
        names_->Declare(std::move(declaration));
    }
}
TMemoryClass::~TMemoryClass() = default;

const std::string& TMemoryClass::GetClassName(TOptionsMap /*options*/) {
    return name_;
}

boost::shared_ptr<ICIMInstance> TMemoryClass::CreateInstance(TOptionsMap /*options*/) {
    return NewInstance();
}

void TMemoryClass::EnumerateInstances(TInstanceCallback callback, bool /*flag*/, TOptionsMap /*options*/) {
    if (callback.empty()) {
        throw TVORException(TVORStatusCode::invalidParameter);
    }
    // By index up to the current end, because the callback may commit further instances.
    const std::size_t count = instances_.size();
    for (std::size_t i = 0; i < count && callback(instances_[i]); ++i) {
    }
}

const std::vector<TPropertyDeclaration>& TMemoryClass::GetDeclarations() const {
    return names_->GetDeclarations();
}

void TMemoryClass::Declare(TPropertyDeclaration declaration) {
    names_->Declare(std::move(declaration));
}

boost::shared_ptr<TMemoryInstance> TMemoryClass::NewInstance() {
    return boost::make_shared<TMemoryInstance>(weak_from_this(), names_);
}

namespace {

boost::shared_ptr<TMemoryClass> MakeClass(const std::string& name,
                                          std::vector<TPropertyDeclaration> declarations) {
    try {
        return boost::make_shared<TMemoryClass>(name, std::move(declarations));
    } catch (const TVORException&) {
        // The class is new, so any fault, such as a duplicate declaration, is in the arguments of this call.
        throw TVORException(TVORStatusCode::invalidParameter);
    }
}

}  // namespace

TMemoryNamespace::TMemoryNamespace() = default;
TMemoryNamespace::~TMemoryNamespace() = default;

boost::shared_ptr<ICIMClass> TMemoryNamespace::GetClass(const std::string& className,
                                                        TOptionsMap /*options*/) {
    const auto found = byName_.find(className);
    if (found == byName_.end()) {
        throw TVORException(TVORStatusCode::classNotFound);
    }
    return found->second;
}

boost::shared_ptr<TMemoryClass> TMemoryNamespace::AddClass(std::string name,
                                                           std::vector<TPropertyDeclaration> declarations) {
    if (name.empty()) {
        throw TVORException(TVORStatusCode::invalidParameter);
    }
    if (byName_.contains(name)) {
        throw TVORException(TVORStatusCode::alreadyExists);
    }
    auto added = MakeClass(name, std::move(declarations));
    classes_.reserve(classes_.size() + 1);
    byName_.emplace(std::move(name), added);
    classes_.push_back(added);
    return added;
}

void TMemoryNamespace::TakeClasses(TMemoryNamespace&& other) {
    // Works on copies until nothing can throw any more.
    auto classes = classes_;
    auto byName = byName_;
    classes.insert(classes.end(), other.classes_.begin(), other.classes_.end());
    for (const auto& each : other.classes_) {
        if (!byName.emplace(each->GetName(), each).second) {
            throw TVORException(TVORStatusCode::alreadyExists);
        }
    }
    classes_.swap(classes);
    byName_.swap(byName);
    other.classes_.clear();
    other.byName_.clear();
}

boost::shared_ptr<TMemoryClass> TMemoryNamespace::FindClass(std::string_view name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
}

}  // namespace NVORHOST
