// Compares namespaces.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <algorithm>

namespace NVORHOST::NTEST {

/// True for equal classes, declarations, instances and values in the same order.
inline bool AreEqual(const TMemoryNamespace& left, const TMemoryNamespace& right) {
    const auto equalInstances = [](const TMemoryInstance& one, const TMemoryInstance& other) {
        const auto ours = one.GetProperties();
        const auto theirs = other.GetProperties();
        return std::equal(
            ours.begin(), ours.end(), theirs.begin(), theirs.end(),
            [](const auto& a, const auto& b) { return a.name == b.name && a.value == b.value; });
    };
    const auto equalDeclarations = [](const auto& a, const auto& b) {
        return a.name == b.name && a.type == b.type && a.isArray == b.isArray &&
               a.defaultValue == b.defaultValue;
    };
    const auto& ours = left.GetClasses();
    const auto& theirs = right.GetClasses();
    return std::equal(
        ours.begin(), ours.end(), theirs.begin(), theirs.end(), [&](const auto& a, const auto& b) {
            const auto& ofA = a->GetInstances();
            const auto& ofB = b->GetInstances();
            return a->GetName() == b->GetName() &&
                   std::equal(a->GetDeclarations().begin(), a->GetDeclarations().end(),
                              b->GetDeclarations().begin(), b->GetDeclarations().end(), equalDeclarations) &&
                   std::equal(
                       ofA.begin(), ofA.end(), ofB.begin(), ofB.end(),
                       [&](const auto& one, const auto& other) { return equalInstances(*one, *other); });
        });
}

}  // namespace NVORHOST::NTEST
