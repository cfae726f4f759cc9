#include "vorhost/model/class_names.h"

#include "host/vor_exception.h"

#include <utility>

namespace NVORHOST {

using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

namespace {

TCIMValue UnsetValue(const TPropertyDeclaration& declaration) {
    if (!declaration.defaultValue) {
        return declaration.isArray ? TCIMValue::NullArray(declaration.type) : TCIMValue(declaration.type);
    }
    const TCIMValue& value = *declaration.defaultValue;
    if (value.GetType() != declaration.type || value.IsArray() != declaration.isArray) {
        throw TVORException(TVORStatusCode::typeMismatch);
    }
    return value;
}

}  // namespace

std::uint32_t TClassNames::Find(std::string_view name) const noexcept {
    return FindHashed(name, static_cast<std::uint32_t>(TCimNameHash{}(name)));
}

std::uint32_t TClassNames::FindHashed(std::string_view name, std::uint32_t hash) const noexcept {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const TSlot& slot = slots_[i];
        if (slot.nameId == notFound ||
            (slot.hash == hash && EqualCimNames(names_[slot.nameId]->spelling, name))) {
            return slot.nameId;
        }
    }
}

std::uint32_t TClassNames::Intern(std::string_view name) {
    const auto hash = static_cast<std::uint32_t>(TCimNameHash{}(name));
    if (const std::uint32_t known = FindHashed(name, hash); known != notFound) {
        return known;
    }
    if (slots_.size() < 2 * (names_.size() + 1)) {
        Grow();
    }
    const auto nameId = static_cast<std::uint32_t>(names_.size());
    names_.push_back(std::make_unique<TName>(TName{std::string(name), hash, nullptr}));
    Insert({hash, nameId});
    return nameId;
}

void TClassNames::Declare(TPropertyDeclaration declaration) {
    TName& name = *names_[Intern(declaration.name)];
    if (name.unset != nullptr) {
        throw TVORException(TVORStatusCode::alreadyExists);
    }
    auto unset = boost::make_shared<TMemoryProperty>(UnsetValue(declaration));
    declarations_.push_back(std::move(declaration));
    name.unset = std::move(unset);
}

void TClassNames::Insert(TSlot slot) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = slot.hash & mask;
    while (slots_[i].nameId != notFound) {
        i = (i + 1) & mask;
    }
    slots_[i] = slot;
}

void TClassNames::Grow() {
    slots_.assign(2 * slots_.size(), TSlot{});
    for (std::size_t i = 0; i < names_.size(); ++i) {
        Insert({names_[i]->hash, static_cast<std::uint32_t>(i)});
    }
}

}  // namespace NVORHOST
