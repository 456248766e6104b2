// A demo chain written down for a real server: the files make the same databases that the stand-in servers are filled
// with.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "sandbox/chain/bulk_rows.h"
#include "sandbox/chain/chain_builder.h"
#include "sandbox/chain/demo_chain.h"
#include "sandbox/chain/install.h"
#include "sandbox/chain/script_files.h"
#include "tests/sandbox/support/session_runner.h"

namespace sandbox::chain {
namespace {

class WrittenChain : public testing::Test {
protected:
    WrittenChain() { writeScripts(model, folder, "SQL01"); }
    ~WrittenChain() override { std::filesystem::remove_all(folder); }

    // Runs a file as a client with "go" does, each batch in the database that the one before left.
    void runFile(const std::string& name) {
        std::ifstream file(folder / name);
        ASSERT_TRUE(file) << name;
        std::string batch;
        for (std::string line; std::getline(file, line);) {
            if (line != "go") {
                batch += line + "\n";
                continue;
            }
            const std::string answer = test::answer(server.session, batch);
            ASSERT_EQ(answer.find("error "), std::string::npos) << answer << batch.substr(0, 300);
            batch.clear();
        }
        EXPECT_EQ(batch, "") << "every batch ends with go";
    }
    std::string value(const std::string& sql) {
        test::ReplyLines reply;
        server.session.batch(sql, reply);
        return reply.lines.at(1);
    }

    std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("chain_scripts_test." + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    Chain model = chain().departments(1).tills(2).days(1).versions({110, 229}).everyKind().build();
    test::SessionRunner server;
};

TEST_F(WrittenChain, OneServerTakesAllItsFiles) {
    for (const char* name : {"TorvikPOS_101_1.sql", "TorvikPOS_101_2.sql", "TorvikBackOffice.sql"}) runFile(name);

    EXPECT_EQ(value("SELECT RTRIM(IN_DBVERSION) FROM TorvikPOS_101_1.dbo.INNSTILLINGER"), "row '110'");
    EXPECT_EQ(value("SELECT COUNT(*) FROM TorvikPOS_101_2.dbo.ORDRE"),
              "row " + std::to_string(model.tills[1].orders.size()));
    EXPECT_EQ(value("SELECT Ikk_Server + ' ' + Ikk_Database FROM TorvikBackOffice.dbo.Internkundekasse "
                    "WHERE Ikk_Kassenummer = '2'"),
              "row 'SQL01 TorvikPOS_101_2'");
    EXPECT_EQ(value("SELECT Ku_Adresse1 FROM TorvikBackOffice.dbo.Kunde WHERE Ku_Id = 1001"), "row 'Torvik Åmot'");
}

// The rows of a query without what a session's NOCOUNT makes of them, in the order of their texts.
std::vector<std::string> rowsOf(Session& session, const std::string& sql) {
    test::ReplyLines reply;
    session.batch(sql, reply);
    std::erase_if(reply.lines, [](const std::string& line) { return !line.starts_with("row "); });
    std::sort(reply.lines.begin(), reply.lines.end());
    return reply.lines;
}

std::vector<std::string> namesOf(Session& session, const std::string& sql) {
    std::vector<std::string> names = rowsOf(session, sql);
    for (std::string& name : names) name = name.substr(5, name.size() - 6);
    return names;
}

// All tables of the chain's databases with their rows, but for the columns that tell when a row was made.
std::string everything(Session& session, const Chain& chain) {
    std::vector<std::string> databases{DemoChain::kBackOfficeDatabase};
    for (const Till& till : chain.tills) databases.push_back(till.database);
    std::string all;
    for (const std::string& database : databases) {
        (void)test::answer(session, "USE " + database);
        for (const std::string& table :
             namesOf(session, "SELECT CONVERT(varchar(128), name) FROM sysobjects WHERE xtype = 'U'")) {
            std::string columns;
            for (const std::string& column :
                 namesOf(session, "SELECT CONVERT(varchar(128), name) FROM syscolumns WHERE id = OBJECT_ID('" + table +
                                      "') AND name NOT LIKE '%UpdDato'"))
                columns += (columns.empty() ? "" : ", ") + column;
            all += database + "." + table + " (" + columns + ")\n";
            for (const std::string& row : rowsOf(session, "SELECT " + columns + " FROM " + table)) all += row + "\n";
        }
    }
    return all;
}

TEST_F(WrittenChain, HoldsTheRowsThatTheStandInServersAreLoadedWith) {
    for (const char* name : {"TorvikPOS_101_1.sql", "TorvikPOS_101_2.sql", "TorvikBackOffice.sql"}) runFile(name);

    test::SessionRunner loaded;
    const Filling filling{.run = [&](std::string_view batch) { (void)test::answer(loaded.session, batch); },
                          .insert = [&](const TableData& table) { loadRows(loaded.session, table); }};
    const auto in = [&](const std::string& database) {
        (void)test::answer(loaded.session, "CREATE DATABASE " + database);
        (void)test::answer(loaded.session, "USE " + database);
    };
    for (const Till& till : model.tills) {
        in(till.database);
        installTill(model, till, filling);
    }
    in(DemoChain::kBackOfficeDatabase);
    installBackOffice(
        model,
        [](const Till& till) {
            return TillAddress{"SQL01", till.database, DemoChain::kTillUser, DemoChain::kTillPassword};
        },
        filling);

    EXPECT_EQ(everything(loaded.session, model), everything(server.session, model));
}

TEST_F(WrittenChain, FolderThatCannotBeMadeIsAnError) {
    EXPECT_THROW(writeScripts(model, folder / "TorvikBackOffice.sql" / "under", "SQL01"), std::runtime_error);
}

}  // namespace
}  // namespace sandbox::chain
