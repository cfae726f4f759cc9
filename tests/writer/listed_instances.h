// Instances for the tests of documents, and the order in which a document lists them.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

/// Adds an instance whose only property is its key, with the class's name as value.
inline void AddKeyedInstance(NVORHOST::TMemoryNamespace& collected, const std::string& className,
                             const std::string& key) {
    const auto instance = collected.AddClass(className)->NewInstance();
    instance->Set(key, NKELVOR20::TCIMValue(className));
    instance->CommitInstance({});
}

/// Returns the resource types of the instances in `text`, in order.
inline std::vector<std::string> ListedTypes(const std::string& text) {
    std::vector<std::string> types;
    const std::string before = " resourceType=\"";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("<ResourceInstance ")) {
            const std::size_t from = line.find(before) + before.size();
            types.push_back(line.substr(from, line.find('"', from) - from));
        }
    }
    return types;
}
