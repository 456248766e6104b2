// A chain of one till that is connected to, the roster standing on it and the back office's items loaded: as the
// settlement run leaves it for TOppgjor. The till has what the test sells; `days` adds days of made-up sales.
#pragma once

#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/settlement/oppgjor.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"

namespace torvik::test {

using Rows = std::vector<std::string>;

class OneTill : public testing::Test {
protected:
    explicit OneTill(int version = 213, int days = 2)
        : run({.departments = 1, .tills = 1, .days = days, .versions = {version}}) {
        run.target.Open();
        run.engine.Avdeling->Open();
        EXPECT_TRUE(run.engine.ConnectSource());
        run.engine.LoadVareTable();
        run.engine.LoadVareAliasTable();
    }

    [[nodiscard]] TillVisit visit() { return run.engine.Parts().Visit(); }
    // The failure's text; empty for none.
    QString execute() {
        TOppgjor oppgjor(visit(), run.joinPoints);
        return failureOf([&] { oppgjor.Execute(); });
    }
    template <typename Work>
    static QString failureOf(Work work) {
        try {
            work();
        } catch (const std::exception& e) {
            return ErrorText(e);
        }
        return {};
    }
    void onTill(const std::string& batch) { run.chain.runInTill(0, batch); }
    void inBackOffice(const std::string& batch) { run.chain.runInBackOffice(batch); }
    [[nodiscard]] Rows backOffice(const std::string& sql) const { return run.backOfficeRows(sql); }
    [[nodiscard]] Rows till(const std::string& sql) const { return run.tillRows(0, sql); }

    // What the till sells. Times are "yyyymmdd hh:nn".
    void settlement(int id, const std::string& time) {
        onTill("INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE) VALUES (" + std::to_string(id) + ", '100', '" +
               time + "', 'NORMAL')");
    }
    void order(int id, int settlement, const std::string& time, int customer = 1) {
        onTill(
            "INSERT ORDRE (OR_ID, OR_KU_ID, OR_OP_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS, "
            "OR_REKVISISJONSNUMMER) VALUES (" +
            std::to_string(id) + ", " + std::to_string(customer) + ", " + std::to_string(settlement) + ", '100', '" +
            time + "', '" + time + "', 0, 'Rekv. ' + CONVERT(varchar(10), " + std::to_string(id) + "))");
    }
    // `amounts` is "quantity, price, discount".
    void line(int id, int order, const std::string& item, const std::string& amounts,
              const std::string& status = "NULL", const std::string& vat = "25") {
        onTill(
            "INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_SALGSPRIS, OL_RABATT, OL_STATUS, OL_MVASATS, "
            "OL_KOSTPRIS, OL_MERSALG) VALUES (" +
            std::to_string(id) + ", " + std::to_string(order) + ", '" + item + "', " + amounts + ", " + status + ", " +
            vat + ", 0, 0)");
    }
    // A department beside the till's own, without tills.
    void otherDepartment() {
        inBackOffice(
            "INSERT Internkunde (Ik_Ku_Id, Ik_Avdelingsnummer) SELECT 900, '900' WHERE NOT EXISTS "
            "(SELECT 1 FROM Internkunde WHERE Ik_Ku_Id = 900)");
    }
    void payment(int order, int form, double amount) {
        onTill("INSERT BETALING (BT_ID, BT_BF_ID, BT_OR_ID, BT_BELOP) SELECT 1 + ISNULL(MAX(BT_ID), 0), " +
               std::to_string(form) + ", " + std::to_string(order) + ", " + std::to_string(amount) + " FROM BETALING");
    }

    ChainRun run;
};

}  // namespace torvik::test
