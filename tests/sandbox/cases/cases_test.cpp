// Every case of the case files: those of this folder, and those that stand beside the checkout where they do.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "tests/sandbox/support/case_file.h"

namespace sandbox::test {
namespace {

std::vector<Case> allCases() {
    const std::filesystem::path root = TORVIK_SOURCE_DIR;
    std::vector<Case> all;
    const std::filesystem::path shared = root.parent_path() / "shared";
    for (const auto& folder : {root / "tests/sandbox/cases", shared / "tsql-cases", shared / "tsql-found"}) {
        if (!std::filesystem::is_directory(folder)) continue;
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".case") files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            for (Case& one : CaseReader().read(file.string())) all.push_back(std::move(one));
        }
    }
    return all;
}

std::string testName(const testing::TestParamInfo<Case>& info) {
    std::string name = info.param.file + "_" + info.param.name;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

class TsqlCase : public testing::TestWithParam<Case> {};

TEST_P(TsqlCase, GivesTheReplyThatTheFileTells) {
    EXPECT_EQ(runCase(GetParam()), "");
}

TEST(TsqlCases, OfThisProjectAreFound) {
    const std::vector<Case> all = allCases();
    EXPECT_GE(std::count_if(all.begin(), all.end(), [](const Case& one) { return one.file == "statement_forms"; }), 1);
}

INSTANTIATE_TEST_SUITE_P(Files, TsqlCase, testing::ValuesIn(allCases()), testName);

}  // namespace
}  // namespace sandbox::test
