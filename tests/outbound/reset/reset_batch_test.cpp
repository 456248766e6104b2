// The batch of a reset, line by line.
#include "outbound/reset/reset_batch.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik {
namespace {

QString ifThere(const char* table) {
    return QStringLiteral("if exists ( select 1 from sysobjects where name = '%1' and xtype='U' ) delete from %1")
        .arg(QString::fromUtf8(table));
}
QString released(const char* column) {
    return QStringLiteral(
               "if exists (select 1 from sysobjects t join syscolumns c on t.id = c.id where t.name = "
               "'Innstillinger' and c.name = '%1')update Innstillinger set %1 = null")
        .arg(QString::fromUtf8(column));
}
const QString kLast = QStringLiteral(
    "if exists (select 1 from sysobjects t join syscolumns c on t.id = c.id where t.name = 'Innstillinger' and c.name = "
    "'IN_NUMMERSERIER_SYNKRONISERT') update Innstillinger set IN_NUMMERSERIER_SYNKRONISERT = 0");

QStringList sales() {
    return {ifThere("betalingsignatur"),
            ifThere("generellsignatur"),
            QStringLiteral("if exists ( select 1 from sysobjects where name = 'ResetDB' and xtype='P' )"),
            QStringLiteral("EXEC ResetDB"),
            QStringLiteral("ELSE"),
            QStringLiteral("BEGIN"),
            QStringLiteral("delete from logg"),
            QStringLiteral("delete from ordre"),
            ifThere("kasseuttak"),
            ifThere("varemottaklinje"),
            ifThere("varemottak"),
            ifThere("ekstraansattoppgjor"),
            ifThere("Reklamasjonlinje"),
            ifThere("Reklamasjon"),
            ifThere("Vedlegg"),
            QStringLiteral("delete from oppgjor"),
            QStringLiteral("delete from gavekort"),
            QStringLiteral("delete from tilgodelapp"),
            ifThere("timer"),
            ifThere("melding"),
            ifThere("meldingvedlegg"),
            QStringLiteral("END")};
}

TEST(ResetBatch, SalesGoAlways) {
    for (const TInitializeItems& items : {TInitializeItems{}, TInitializeItems{nutvOppgjor}})
        EXPECT_EQ(ResetBatch(items), sales() << kLast);
}

TEST(ResetBatch, RegistersGoWhereTheyAreChosenInTheirOrder) {
    const QStringList items{
        ifThere("mersalgvare"),
        ifThere("gavekortvare"),
        ifThere("varegruppe"),
        ifThere("varealias"),
        QStringLiteral(
            "if exists ( select 1 from syscolumns where name = 'IN_SMARTKORT_VA_ID' ) update innstillinger set "
            "in_smartkort_va_id=null"),
        ifThere("plumedlem"),
        ifThere("plu"),
        released("IN_FAKTURAGEBYR_VA_ID"),
        released("IN_SMARTKORT_VA_ID"),
        released("IN_MIFARE_VA_ID"),
        released("IN_BONUS_VA_ID"),
        released("IN_BETALING_VA_ID"),
        ifThere("vare")};
    const QStringList customers{ifThere("rabattkortkunde"), ifThere("kunde")};
    const QStringList staff{ifThere("adgangskort"), ifThere("arbeidsplan"), ifThere("ansatt")};
    EXPECT_EQ(ResetBatch(TInitializeItems{nutvVare}), sales() + items << kLast);
    EXPECT_EQ(ResetBatch(TInitializeItems{nutvKunde}), sales() + customers << kLast);
    EXPECT_EQ(ResetBatch(TInitializeItems{nutvAnsatt}), sales() + staff << kLast);
    EXPECT_EQ(ResetBatch(TInitializeItems{nutvOppgjor, nutvVare, nutvKunde, nutvAnsatt}),
              sales() + items + customers + staff << kLast);
}

}  // namespace
}  // namespace torvik
