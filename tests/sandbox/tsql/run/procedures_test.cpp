// How arguments meet parameters.
#include "sandbox/tsql/run/procedures.h"

#include <gtest/gtest.h>

#include "sandbox/tsql/parse/parser.h"

namespace sandbox {
namespace {

CallArgument argument(std::string name, bool output = false, bool useDefault = false) {
    return {.name = std::move(name),
            .value = {Type{.id = TypeId::Int}, std::int64_t{1}},
            .output = output,
            .useDefault = useDefault,
            .target = std::nullopt};
}

int raised(std::string_view declarations, const std::vector<CallArgument>& arguments,
           const std::string& procedure = "p") {
    try {
        (void)matchArguments(parseDeclarations(declarations), arguments, procedure, "SELECT 1", declarations);
    } catch (const SqlError& e) {
        return e.messages.front().number;
    }
    return 0;
}

TEST(Arguments, GoByPlaceAndByName) {
    const auto parameters = parseDeclarations("@a int, @b int = 2, @c int = 3");
    EXPECT_EQ(matchArguments(parameters, {argument(""), argument("@C")}, "p", {}, {}), (std::vector<int>{0, -1, 1}));
    EXPECT_EQ(matchArguments(parameters, {argument(""), argument("", false, true)}, "p", {}, {}),
              (std::vector<int>{0, 1, -1}));
}

TEST(Arguments, ThatDoNotFitAreErrors) {
    EXPECT_EQ(raised("@a int", {}), 201);
    EXPECT_EQ(raised("@a int", {argument("", false, true)}), 201);
    EXPECT_EQ(raised("@a int", {}, ""), 8178);
    EXPECT_EQ(raised("@a int", {argument("@a"), argument("@a")}), 8143);
    EXPECT_EQ(raised("@a int", {argument(""), argument("")}), 8144);
    EXPECT_EQ(raised("@a int", {argument("@b")}), 8145);
    EXPECT_EQ(raised("", {argument("")}), 8146);
    EXPECT_EQ(raised("@a int", {argument("", true)}), 8162);
    EXPECT_EQ(raised("@a int OUTPUT", {argument("", true)}), 0);
}

}  // namespace
}  // namespace sandbox
