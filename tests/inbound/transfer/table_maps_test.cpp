// The tables of data that the fetch is made of: steps, maps and staging tables agree with each other.
#include <gtest/gtest.h>

#include <QSet>

#include "inbound/transfer/maps/table_map.h"
#include "inbound/transfer/staging_tables.h"
#include "inbound/transfer/transfer_steps.h"
#include "tests/inbound/till_transfer.h"

namespace torvik::test {
namespace {

TEST(TransferSteps, AreNumberedFrom1To46InOrder) {
    int expected = 0;
    for (const TransferStep& step : transferSteps()) EXPECT_EQ(step.p, ++expected);
    EXPECT_EQ(expected, 46);
}

TEST(TransferSteps, EachDoesOneThing) {
    for (const TransferStep& step : transferSteps()) {
        EXPECT_FALSE(step.run && step.map) << step.p;
        EXPECT_TRUE(step.run || step.map || step.before != DtsLogg::None) << step.p;
        if (step.map) {
            EXPECT_STREQ(step.name, step.map->step);
        }
    }
}

TEST(TableMaps, NameEachStagingColumnOnce) {
    for (const TableMap* map : allTableMaps()) {
        QSet<QString> targets;
        for (const ColumnRule& rule : map->columns) {
            const QString target = QString::fromUtf8(rule.target).toLower();
            EXPECT_FALSE(targets.contains(target)) << map->step << ": " << rule.target;
            targets << target;
        }
        EXPECT_FALSE(targets.isEmpty()) << map->step;
    }
}

TEST(TableMaps, WriteTheRunIdentifierTheDepartmentAndTheTill) {
    for (const TableMap* map : allTableMaps())
        for (const From::Kind kind : {From::Kind::UnId, From::Kind::IkKuId, From::Kind::KasseNr}) {
            const bool found = std::any_of(map->columns.begin(), map->columns.end(),
                                           [kind](const ColumnRule& rule) { return rule.from.kind == kind; });
            EXPECT_TRUE(found) << map->step << " lacks kind " << static_cast<int>(kind);
        }
}

TEST(StagingTables, AreMadeWhereTheyAreMissingAndLeftWhereTheyStand) {
    ChainRun run({.departments = 1, .tills = 0, .days = 0});
    run.target.Open();
    db::Query create(&run.target);
    create.ParamCheck = false;
    create.SQL = createTempTablesSql();
    create.ExecSQL();
    run.chain.runInBackOffice("ALTER TABLE Temp_Oppgjor_Import ADD toi_senere int NULL");

    create.ExecSQL();

    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM syscolumns WHERE name = 'toi_senere'"), "1");
    EXPECT_EQ(
        run.backOfficeValue("SELECT COUNT(*) FROM sysobjects WHERE xtype = 'U' AND name LIKE 'Temp[_]%[_]Import'"),
        "35");
    for (const TableMap* map : allTableMaps())
        for (const ColumnRule& rule : map->columns) {
            if (rule.when != When::Always) continue;
            const std::string column = std::string("SELECT COUNT(*) FROM syscolumns WHERE id = OBJECT_ID('") +
                                       map->target + "') AND name = '" + rule.target + "'";
            EXPECT_EQ(run.backOfficeValue(column), "1") << map->target << "." << rule.target;
        }
}

}  // namespace
}  // namespace torvik::test
