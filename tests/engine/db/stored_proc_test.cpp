// Procedure calls by name: parameters, return value, outputs, errors.
#include "engine/db/stored_proc.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

class StoredProcTest : public test::OverTheWire {
protected:
    void create(const char* name, const char* text) {
        server.run(QString::fromUtf8(text));
        procedure.StoredProcName = QString::fromUtf8(name);
    }

    StoredProc procedure{&server.session()};
};

TORVIK_OVER_THE_WIRE(StoredProcTest);

TEST_P(StoredProcTest, ParametersByNameAndTheReturnValue) {
    server.run(QStringLiteral("CREATE TABLE L (a int, b int, c uniqueidentifier)"));
    create("DeleteFromTemp;1",
           "CREATE PROCEDURE DeleteFromTemp @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS "
           "INSERT L VALUES (@Ik_Ku_Id, @KasseNr, @UnId) RETURN 7");
    const QUuid id = QUuid::createUuid();
    procedure.ParamByName(QStringLiteral("UnId")) = id;
    procedure.ParamByName(QStringLiteral("KasseNr")).SetType(FieldType::Integer);
    procedure.ParamByName(QStringLiteral("KasseNr")) = "12";
    procedure.ParamByName(QStringLiteral("Ik_Ku_Id")) = 3;
    procedure.ExecProc();
    EXPECT_EQ(procedure.ReturnValue(), 7);
    EXPECT_EQ(procedure.ParamByName(QStringLiteral(":RETURN_VALUE")).AsInteger(), 7);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a, b FROM L")), "a | b\n3 | 12\n");
}

TEST_P(StoredProcTest, OutputsAndDefaults) {
    create("P",
           "CREATE PROCEDURE P @a int = 5, @b varchar(20) OUTPUT, @c decimal(9,2) OUTPUT AS "
           "SET @b = @b + 'æ' + CONVERT(varchar(9), @a) SET @c = 1.25 SELECT 1 AS rad");
    procedure.ParamByName(QStringLiteral("b")) = "x";
    procedure.ParamByName(QStringLiteral("b")).SetOutput(true);
    procedure.ParamByName(QStringLiteral("c")).SetOutput(true);
    procedure.ParamByName(QStringLiteral("c")).SetType(FieldType::Decimal);
    procedure.ExecProc();
    EXPECT_EQ(procedure.ReturnValue(), 0);
    EXPECT_EQ(procedure.ParamByName(QStringLiteral("b")).AsString(), QStringLiteral("xæ5"));
    EXPECT_EQ(procedure.ParamByName(QStringLiteral("c")).AsString(), QStringLiteral("1.25"));
}

TEST_P(StoredProcTest, AnErrorInsideIsRaisedWithItsNumber) {
    create("P", "CREATE PROCEDURE P AS RAISERROR('Oppgjør mangler', 16, 1) RETURN 1");
    try {
        procedure.ExecProc();
        FAIL() << "ran";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 50000);
        EXPECT_EQ(e.text(), QStringLiteral("Oppgjør mangler"));
    }
}

TEST_P(StoredProcTest, AMissingProcedureIsTheServersError) {
    procedure.StoredProcName = QStringLiteral("Finnes_ikke");
    try {
        procedure.ExecProc();
        FAIL() << "ran";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 2812);
    }
}

TEST_P(StoredProcTest, AWrongParameterNameIsTheServersError) {
    create("P", "CREATE PROCEDURE P @a int AS RETURN 0");
    procedure.ParamByName(QStringLiteral("b")) = 1;
    EXPECT_THROW(procedure.ExecProc(), StatementError);
}

}  // namespace
}  // namespace torvik::db
