#include "machine/collect/run/collectors.h"
#include "writer/resource_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

// The classes of the context, of the system information and of the answer, which are in no list of resources.
std::set<std::string_view> ListClassesOfDocuments() {
    std::set<std::string_view> classes{"KELSG_ComputerSystem", "KELSG_OperatingSystem", "KELSG_DataSource",
                                       "KELSG_CADAT"};
    for (const TListRow& row : GetResourceLists()) {
        classes.insert(row.source.name);
    }
    return classes;
}

TEST(Collectors, AreForDocumentsIfAndOnlyIfADocumentHasOneOfTheirClasses) {
    const auto classes = ListClassesOfDocuments();
    for (const TCollector& collector : GetCollectors()) {
        bool isInDocuments = false;
        for (const IClassDeclaration* cimClass : collector.fills) {
            isInDocuments = isInDocuments || classes.contains(cimClass->GetName());
        }
        EXPECT_EQ(collector.isForDocuments, isInDocuments) << collector.name;
    }
}

TEST(ChooseCollectors, LeavesOutCollectorsOfNoDocument) {
    std::vector<std::string_view> leftOut;
    const auto chosen = ChooseCollectors({{}, {}, /*withProcesses=*/false, /*documentsOnly=*/true});
    for (const TCollector& collector : ChooseCollectors({})) {
        if (std::none_of(chosen.begin(), chosen.end(),
                         [&](const TCollector& each) { return each.name == collector.name; })) {
            leftOut.push_back(collector.name);
        }
    }
    EXPECT_THAT(leftOut, testing::Contains("ip-endpoint"));
    EXPECT_THAT(leftOut, testing::Not(testing::Contains("disk")));
}

}  // namespace
}  // namespace NVORHOST
