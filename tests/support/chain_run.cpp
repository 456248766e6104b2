// See chain_run.h.
#include "tests/support/chain_run.h"

#include <algorithm>

#include "engine/db/query.h"
#include "sandbox/chain/posted_rows.h"
#include "tests/support/chain_session.h"
#include "tests/support/sandbox_given_server.h"

namespace torvik::test {

namespace {

using sandbox::chain::TableData;

const std::set<std::string> kMomentsOfARun{"Pos_Op_Synkronisert"};

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

std::string cell(const db::Value& value) {
    if (value.isNull()) return "NULL";
    if (const bool* bit = std::get_if<bool>(&value.variant())) return *bit ? "1" : "0";
    if (const auto* time = std::get_if<db::DateTime>(&value.variant()))
        return time->toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")).toStdString();
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant()))
        return "0x" + bytes->toHex().toUpper().toStdString();
    return value.toQString().toStdString();
}

std::vector<std::string> lines(db::Session& session, const QString& sql) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QStringList{sql};
    query.Open();
    std::vector<std::string> all;
    for (; !query.Eof(); query.Next()) {
        std::string line;
        for (int i = 0; i < query.FieldCount(); ++i) line += (i ? " | " : "") + cell(query.Fields(i).AsValue());
        all.push_back(std::move(line));
    }
    return all;
}

std::string onlyValue(db::Session& session, const std::string& sql) {
    const auto all = lines(session, qt(sql));
    return all.empty() ? "no row" : all.front();
}

std::vector<std::string> expectedLines(const TableData& table) {
    std::vector<std::string> all;
    for (const auto& row : table.rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) line += (i ? " | " : "") + sandbox::chain::cellText(row[i]);
        all.push_back(std::move(line));
    }
    std::sort(all.begin(), all.end());
    return all;
}

std::string difference(const std::vector<std::string>& expected, const std::vector<std::string>& actual) {
    std::string text;
    std::vector<std::string> missing;
    std::vector<std::string> unexpected;
    std::set_difference(expected.begin(), expected.end(), actual.begin(), actual.end(), std::back_inserter(missing));
    std::set_difference(actual.begin(), actual.end(), expected.begin(), expected.end(), std::back_inserter(unexpected));
    for (const std::string& line : missing) text += "- " + line + "\n";
    for (const std::string& line : unexpected) text += "+ " + line + "\n";
    return text;
}

std::string columnList(const TableData& table) {
    std::string list;
    for (const std::string& column : table.columns) list += (list.empty() ? "" : ", ") + column;
    return list;
}

testing::AssertionResult holds(db::Session& session, const TableData& table) {
    auto actual = lines(session, qt("SELECT " + columnList(table) + " FROM " + table.table));
    std::sort(actual.begin(), actual.end());
    const auto expected = expectedLines(table);
    if (actual == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << table.table << " (" << columnList(table) << "), expected -, found +\n"
                                       << difference(expected, actual);
}

std::string contents(db::Session& session) {
    std::string text;
    for (const std::string& table :
         lines(session, QStringLiteral("SELECT name FROM sysobjects WHERE xtype = 'U' ORDER BY name"))) {
        std::string columns;
        for (const std::string& column :
             lines(session, qt("SELECT name FROM syscolumns WHERE id = OBJECT_ID('" + table + "') ORDER BY colid")))
            if (!kMomentsOfARun.contains(column)) columns += (columns.empty() ? "" : ", ") + column;
        auto rows = lines(session, qt("SELECT " + columns + " FROM " + table));
        std::sort(rows.begin(), rows.end());
        text += table + " (" + columns + ")\n";
        for (const std::string& row : rows) text += "  " + row + "\n";
    }
    return text;
}

}  // namespace

ChainRun::ChainRun(const sandbox::chain::ChainOptions& options)
    : RunningChain{sandbox::chain::DemoChain({.chain = options, .elsewhere = givenServerForAChain()})},
      ChainProgram(chain.dataLink()) {}

ChainRun::ChainRun(sandbox::chain::Chain model)
    : RunningChain{sandbox::chain::DemoChain({.model = std::move(model), .elsewhere = givenServerForAChain()})},
      ChainProgram(chain.dataLink()) {}

testing::AssertionResult ChainRun::posted(const std::set<std::size_t>& tills) const {
    const auto session = backOfficeSession(chain);
    for (const TableData& table : sandbox::chain::postedTables(chain.model(), tills))
        if (auto held = holds(*session, table); !held) return held;
    return testing::AssertionSuccess();
}

testing::AssertionResult ChainRun::backOfficeHolds(const TableData& table) const {
    return holds(*backOfficeSession(chain), table);
}

testing::AssertionResult ChainRun::tillHolds(std::size_t till, const TableData& table) const {
    return holds(*tillSession(chain, till), table);
}

testing::AssertionResult ChainRun::postedWhole() const {
    std::set<std::size_t> all;
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i) all.insert(i);
    return posted(all);
}

std::string ChainRun::everything() const {
    std::string text = "back office\n" + contents(*backOfficeSession(chain));
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i)
        text += chain.model().tills[i].database + "\n" + contents(*tillSession(chain, i));
    return text;
}

std::map<std::string, ChainRun::Table> ChainRun::tillTables(std::size_t till) const {
    const auto session = tillSession(chain, till);
    std::map<std::string, Table> tables;
    for (const std::string& name :
         lines(*session, QStringLiteral("SELECT name FROM sysobjects WHERE xtype = 'U' ORDER BY name"))) {
        db::Query query(session.get());
        query.ParamCheck = false;
        query.SQL = QStringList{qt("SELECT * FROM " + name)};
        query.Open();
        Table& table = tables[name];
        for (int i = 0; i < query.FieldCount(); ++i) table.columns.push_back(query.Fields(i).Name().toStdString());
        for (; !query.Eof(); query.Next()) {
            auto& row = table.rows.emplace_back();
            for (int i = 0; i < query.FieldCount(); ++i) row.push_back(cell(query.Fields(i).AsValue()));
        }
    }
    return tables;
}

std::string ChainRun::backOfficeValue(const std::string& sql) const {
    return onlyValue(*backOfficeSession(chain), sql);
}

std::string ChainRun::tillValue(std::size_t till, const std::string& sql) const {
    return onlyValue(*tillSession(chain, till), sql);
}

std::vector<std::string> ChainRun::backOfficeRows(const std::string& sql) const {
    return lines(*backOfficeSession(chain), qt(sql));
}

std::vector<std::string> ChainRun::tillRows(std::size_t till, const std::string& sql) const {
    return lines(*tillSession(chain, till), qt(sql));
}

}  // namespace torvik::test
