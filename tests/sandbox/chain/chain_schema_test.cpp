// The scripts of the demo chain: each schema version of a till has what the table of gains says and nothing else, and
// the scripts keep to what SQL Server 2016 takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/chain/install.h"
#include "sandbox/chain/scripts.h"
#include "sandbox/chain/till_versions.h"
#include "tests/sandbox/support/session_runner.h"

namespace sandbox::chain {
namespace {

using test::SessionRunner;

void runScript(SessionRunner& server, std::string_view script) {
    for (const std::string_view batch : batchesOf(script)) {
        const std::string answer = server.run(batch);
        ASSERT_EQ(answer.find("error "), std::string::npos) << script << ": " << answer;
    }
}

std::set<std::string> rowsOf(SessionRunner& server, const std::string& sql) {
    test::ReplyLines reply;
    server.session.batch(sql, reply);
    std::set<std::string> rows;
    for (const std::string& line : reply.lines)
        if (line.starts_with("row ")) rows.insert(line.substr(4));
    return rows;
}

// Every column with its type, as the catalogue tells it.
std::set<std::string> columnsOf(SessionRunner& server) {
    return rowsOf(server,
                  "SELECT TABLE_NAME + '.' + COLUMN_NAME + ' ' + DATA_TYPE + ' ' + "
                  "ISNULL(CONVERT(varchar(10), CHARACTER_MAXIMUM_LENGTH), '') + ' ' + IS_NULLABLE "
                  "FROM INFORMATION_SCHEMA.COLUMNS");
}

std::set<std::string> columnsAt(int version) {
    SessionRunner server;
    for (const std::string_view script : tillScripts(version)) runScript(server, script);
    return columnsOf(server);
}

bool gained(const std::string& column, const SchemaGain& gain) {
    const std::string wanted = std::string(gain.table) + "." + std::string(gain.column);
    const std::size_t at = column.find(wanted);
    if (at == std::string::npos || at > 1) return false;
    return gain.column.empty() || column.at(at + wanted.size()) == ' ';
}

TEST(TillSchema, EachVersionHasWhatTheVersionsUpToItBrought) {
    const std::vector<int> versions = tillVersions();
    const std::set<std::string> newest = columnsAt(versions.back());
    for (const int version : versions) {
        std::set<std::string> expected;
        for (const std::string& column : newest)
            if (std::none_of(schemaGains().begin(), schemaGains().end(),
                             [&](const SchemaGain& gain) { return gain.version > version && gained(column, gain); }))
                expected.insert(column);
        EXPECT_EQ(columnsAt(version), expected) << "version " << version;
    }
}

TEST(TillSchema, EveryGainIsThereAndOfAVersionThatHasAScript) {
    const std::vector<int> versions = tillVersions();
    const std::set<std::string> newest = columnsAt(versions.back());
    int last = 0;
    for (const SchemaGain& gain : schemaGains()) {
        EXPECT_TRUE(std::any_of(newest.begin(), newest.end(), [&](const auto& c) { return gained(c, gain); }))
            << gain.table << "." << gain.column;
        EXPECT_NE(std::find(versions.begin(), versions.end(), gain.version), versions.end()) << gain.version;
        EXPECT_GE(gain.version, last) << gain.table;
        last = gain.version;
    }
}

TEST(TillSchema, EachScriptLeavesItsOwnVersion) {
    SessionRunner server;
    for (const int version : tillVersions()) {
        runScript(server, version == tillVersions().front() ? "till" : "till_" + std::to_string(version));
        EXPECT_EQ(rowsOf(server, "SELECT RTRIM(IN_DBVERSION) FROM INNSTILLINGER").size(), 1u);
        EXPECT_NE(
            rowsOf(server, "SELECT RTRIM(IN_DBVERSION) FROM INNSTILLINGER").begin()->find(std::to_string(version)),
            std::string::npos);
    }
}

TEST(TillSchema, VersionWithoutAScriptIsRefused) {
    EXPECT_THROW((void)tillScripts(140), std::invalid_argument);
}

TEST(TillSchema, TillThatHasSoldIsUpgradedToTheSameAsANewOne) {
    const Chain chain = makeChain({.departments = 1, .tills = 1, .days = 1, .versions = {71}, .everyKind = true});
    SessionRunner server;
    installTill(chain, chain.tills.front(), {.run = [&](std::string_view batch) {
                    const std::string answer = server.run(batch);
                    ASSERT_EQ(answer.find("error "), std::string::npos) << answer;
                }});
    const auto sold = rowsOf(server, "SELECT OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL FROM ORDRELINJE");
    for (const int version : tillVersions())
        if (version > 71) runScript(server, "till_" + std::to_string(version));

    EXPECT_EQ(columnsOf(server), columnsAt(tillVersions().back()));
    EXPECT_FALSE(sold.empty());
    EXPECT_EQ(rowsOf(server, "SELECT OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL FROM ORDRELINJE"), sold);
}

// Tables that a delete from `table` reaches along `cascades`, each as often as there are ways.
void follow(const std::multimap<std::string, std::string>& cascades, const std::string& table,
            std::multiset<std::string>& reached) {
    for (auto [at, end] = cascades.equal_range(table); at != end; ++at) {
        reached.insert(at->second);
        if (reached.size() < 1000) follow(cascades, at->second, reached);
    }
}

// SQL Server refuses (error 1785) a second way of cascading deletes from one table to another.
TEST(TillSchema, DeletesReachNoTableInTwoWays) {
    SessionRunner server;
    for (const std::string_view script : tillScripts(tillVersions().back())) runScript(server, script);
    std::multimap<std::string, std::string> cascades;
    for (const std::string& row :
         rowsOf(server,
                "SELECT OBJECT_NAME(referenced_object_id) + '>' + OBJECT_NAME(parent_object_id) + '>' + name "
                "FROM sys.foreign_keys WHERE delete_referential_action = 1")) {
        const std::string names(row.begin() + (row.front() == '\'' ? 1 : 0), row.end());
        const std::size_t first = names.find('>');
        cascades.emplace(names.substr(0, first), names.substr(first + 1, names.find('>', first + 1) - first - 1));
    }
    ASSERT_FALSE(cascades.empty());
    for (const auto& [table, child] : cascades) {
        std::multiset<std::string> reached;
        follow(cascades, table, reached);
        for (const std::string& name : reached) EXPECT_EQ(reached.count(name), 1u) << table << " reaches " << name;
    }
}

// Whatever came after SQL Server 2016, as words of their own.
TEST(ChainScripts, UseNothingNewerThanSqlServer2016) {
    static const std::set<std::string> kNewer{"STRING_AGG",
                                              "TRIM",
                                              "CONCAT_WS",
                                              "TRANSLATE",
                                              "GREATEST",
                                              "LEAST",
                                              "DATETRUNC",
                                              "GENERATE_SERIES",
                                              "APPROX_COUNT_DISTINCT",
                                              "IS_DISTINCT",
                                              "DATE_BUCKET"};
    for (const EmbeddedScript& script : embeddedScripts()) {
        std::string word;
        for (const char c : script.text) {
            if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
                word += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
                continue;
            }
            EXPECT_FALSE(kNewer.contains(word)) << script.name << " uses " << word;
            word.clear();
        }
    }
}

// A batch is what a client sends: definitions of modules stand alone, and every script ends its last batch.
TEST(ChainScripts, ModulesBeginTheirBatches) {
    for (const EmbeddedScript& script : embeddedScripts()) {
        EXPECT_TRUE(script.text.ends_with("\ngo\n")) << script.name;
        for (const std::string_view batch : batchesOf(script.name)) {
            std::string code;
            for (std::size_t at = 0; at < batch.size();) {
                const std::size_t end = std::min(batch.find('\n', at), batch.size());
                const std::string_view line = batch.substr(at, end - at);
                if (!line.starts_with("--") && !line.empty()) code += std::string(line) + "\n";
                at = end + 1;
            }
            for (const char* module : {"CREATE PROCEDURE", "ALTER PROCEDURE", "CREATE VIEW"}) {
                const std::size_t at = code.find(module);
                EXPECT_TRUE(at == std::string::npos || at == 0) << script.name << ": " << code.substr(0, 60);
            }
        }
    }
}

}  // namespace
}  // namespace sandbox::chain
