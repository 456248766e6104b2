// Names on a till's share: what is told, which machine is meant, and where in the share a file goes.
#include "fleet/share/share_names.h"

#include <gtest/gtest.h>

namespace torvik {
namespace {

TEST(ShareNames, ServerOfTheDatabaseNamesTheMachine) {
    const struct {
        const char* server;
        const char* host;
    } cases[] = {
        {"kasse7", "kasse7"},          {"10.1.2.3", "10.1.2.3"},     {"10.1.2.3,1433", "10.1.2.3"},
        {"kasse7 , 1433", "kasse7"},   {"kasse7\\TORVIK", "kasse7"}, {"kasse7\\TORVIK,1433", "kasse7"},
        {"tcp:kasse7,1433", "kasse7"},
    };
    for (const auto& [server, host] : cases) EXPECT_EQ(hostOf(server), host) << server;
}

TEST(ShareNames, ResourceIsReachedAtTheMachine) {
    const struct {
        const char* told;
        const char* reached;
    } cases[] = {
        {R"(\\kasse7\C$)", R"(\\kasse7\C$)"},        {R"(\\kasse7,1433\C$)", R"(\\kasse7\C$)"},
        {R"(\\kasse7\TORVIK\C$)", R"(\\kasse7\C$)"}, {R"(\\kasse7\TORVIK,1433\C$)", R"(\\kasse7\C$)"},
        {R"(\\kasse7,1433\C$\)", R"(\\kasse7\C$)"},
    };
    for (const auto& [told, reached] : cases) EXPECT_EQ(reachedResource(told), reached) << told;
}

TEST(ShareNames, FolderOfTheTargetMayBeginAndEndWithASeparatorOrNot) {
    const struct {
        const char* resource;
        const char* folder;
        const char* target;
    } cases[] = {
        {R"(\\k\C$)", R"(\TorvikPOS\)", R"(\\k\C$\TorvikPOS\a.zip)"},
        {R"(\\k\C$\)", R"(\TorvikPOS\)", R"(\\k\C$\TorvikPOS\a.zip)"},
        {R"(\\k\C$)", R"(TorvikPOS)", R"(\\k\C$\TorvikPOS\a.zip)"},
        {R"(\\k\C$)", R"(\TorvikPOS)", R"(\\k\C$\TorvikPOS\a.zip)"},
        {R"(\\k\C$)", R"(A\B\)", R"(\\k\C$\A\B\a.zip)"},
        {R"(\\k\C$)", R"(\)", R"(\\k\C$\a.zip)"},
        {R"(\\k\C$)", "", R"(\\k\C$\a.zip)"},
        {R"(\\k\C$)", "A", R"(\\k\C$\A\a.zip)"},
    };
    for (const auto& [resource, folder, target] : cases)
        EXPECT_EQ(targetName(resource, folder, "a.zip"), target) << resource << " " << folder;
}

}  // namespace
}  // namespace torvik
