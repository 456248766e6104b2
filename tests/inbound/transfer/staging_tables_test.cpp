// The staging tables where the driver itself makes them: each column with its type, length and collation, as the back
// office's own procedures expect them.
#include "inbound/transfer/staging_tables.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include "tests/inbound/till_transfer.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

struct StagingTable {
    const char* name;
    const char* index;
    const char* key;      // the column that the index is on
    const char* columns;  // not null unless it says so; a star: in the collation of the database
};

constexpr StagingTable kStagingTables[] = {
    {"Temp_Betalingform_Import", "t_betalingform_i", "tbfi_id",
     "tbfi_id int, tbfi_ik_ku_id int, tbfi_kassenr int, tbfi_ko_id int null, tbfi_navn char(50), "
     "tbfi_aktiv tinyint, tbfi_skuff tinyint, tbfi_synlig tinyint, tbfi_paavirkersalg tinyint, "
     "tbfi_vu_id char(3), tbfi_inserted datetime, tbfi_unid uniqueidentifier null"},
    {"Temp_Loggtype_Import", "t_loggtype_i", "tlti_id",
     "tlti_id int, tlti_ik_ku_id int, tlti_kassenr int, tlti_navn char(50), tlti_inserted datetime, "
     "tlti_unid uniqueidentifier null"},
    {"Temp_Oppgjor_Import", "t_oppgjor_i", "toi_op_id",
     "toi_op_id int, toi_ik_ku_id int, toi_kassenr int, toi_ika_id char(10)*, toi_tidspunkt datetime, "
     "toi_oppdaterttidspunkt datetime null, toi_type varchar(15), toi_status int, "
     "toi_tidspunktferdig datetime null, toi_antkunderinnom int null, toi_nattsafe_innkastnr varchar(50) null, "
     "toi_inserted datetime, toi_unid uniqueidentifier null, toi_kommentar varchar(1024) null"},
    {"Temp_Oppgjorlinje_Import", "t_oppgjorlinje_i", "toli_op_id",
     "toli_opl_id int, toli_ik_ku_id int, toli_kassenr int, toli_op_id int, toli_pe_id int, "
     "toli_vekslepenger float, toli_opptalt float, toli_faktisk float, toli_inserted datetime, "
     "toli_unid uniqueidentifier null"},
    {"Temp_Oppgjorbetaling_Import", "t_oppgjorbetaling_i", "tobi_op_id",
     "tobi_op_id int, tobi_ik_ku_id int, tobi_kassenr varchar(20)*, tobi_bf_id int, tobi_belop float, "
     "tobi_opptalt float, tobi_inserted datetime, tobi_unid uniqueidentifier null"},
    {"Temp_Ordre_Import", "t_ordre_i", "toi_or_id",
     "toi_or_id int, toi_ik_ku_id int, toi_kassenr varchar(20)*, toi_ku_id int, toi_op_id int, "
     "toi_ika_id char(10)*, toi_ra_id char(20)* null, toi_rabatt_ika_id char(10)* null, "
     "toi_tidspunkt datetime, toi_tidspunktferdig datetime, toi_status int, "
     "toi_rekvisisjonsnummer varchar(30)* null, toi_postnr varchar(10)* null, toi_telefon varchar(20)* null, "
     "toi_salgssum float null, toi_rabatt float null, toi_inserted datetime, toi_unid uniqueidentifier null, "
     "toi_statistikk_ika_id varchar(10) null, toi_varetelling bit null, toi_Or_Torvik_Or_Id int null"},
    {"Temp_Ordrelinje_Import", "t_ordrelinje_i", "toli_ol_id",
     "toli_ol_id int, toli_ik_ku_id int, toli_kassenr varchar(20)*, toli_or_id int, toli_va_id char(15)*, "
     "toli_antall float, toli_rabatt float, toli_salgspris float, toli_mvasats float, toli_kostpris float, "
     "toli_slettet bit null, toli_mersalg bit, toli_status tinyint null, toli_inserted datetime, "
     "toli_unid uniqueidentifier null"},
    {"Temp_Ordregrunn_Import", "t_ordregrunn_i", "tog_gr_id",
     "tog_gr_id int, tog_or_id int, tog_ik_ku_id int, tog_kassenr varchar(20)*, tog_inserted datetime, "
     "tog_unid uniqueidentifier null"},
    {"Temp_Ordrelinjegrunn_Import", "t_ordrelinjegrunn_i", "tolg_gr_id",
     "tolg_gr_id int, tolg_ol_id int, tolg_ik_ku_id int, tolg_kassenr varchar(20)*, tolg_inserted datetime, "
     "tolg_unid uniqueidentifier null"},
    {"Temp_Betaling_Import", "t_betaling_i", "tbi_bt_id",
     "tbi_bt_id int, tbi_ik_ku_id int, tbi_kassenr varchar(20)*, tbi_bf_id int, tbi_or_id int, "
     "tbi_belop float, tbi_vu_kurs float null, tbi_inserted datetime, tbi_unid uniqueidentifier null"},
    {"Temp_Betalingbankinfo_Import", "t_betalingbankinfo_i", "tbbi_bbi_id",
     "tbbi_bbi_id int, tbbi_ik_ku_id int, tbbi_kassenr varchar(20)*, tbbi_bt_id int, tbbi_ko_id int, "
     "tbbi_kortdata varchar(25)* null, tbbi_tidsstempel char(14)* null, "
     "tbbi_lojalitetsinfo varchar(100)* null, tbbi_avstem_sesjonsnummer varchar(10)* null, "
     "tbbi_inserted datetime, tbbi_unid uniqueidentifier null, tbbi_tranid varchar(30) null, "
     "tbbi_auth varchar(30) null"},
    {"Temp_Ekstraansattoppgjor_Import", "t_ekstraansattoppgjor_i", "teaoi_eao_id",
     "teaoi_eao_id int, teaoi_ik_ku_id int, teaoi_kassenr varchar(20)*, teaoi_ika_id char(10)*, "
     "teaoi_op_id int, teaoi_utlev_ika_id char(10)* null, teaoi_navn varchar(50)*, teaoi_tidspunkt datetime, "
     "teaoi_inserted datetime, teaoi_unid uniqueidentifier null"},
    {"Temp_Logg_Import", "t_logg_i", "tli_lo_id",
     "tli_lo_id int, tli_ik_ku_id int, tli_kassenr varchar(20)*, tli_ika_id char(10)*, tli_lt_id int, "
     "tli_op_id int null, tli_tidspunkt datetime, tli_merknader varchar(255)* null, tli_inserted datetime, "
     "tli_unid uniqueidentifier null"},
    {"Temp_Varemottak_Import", "t_varemottak_i", "tvi_vm_id",
     "tvi_vm_id int, tvi_ik_ku_id int, tvi_kassenr varchar(20)*, tvi_ika_id char(10)*, tvi_op_id int, "
     "tvi_tidspunkt smalldatetime, tvi_referanse varchar(30)* null, tvi_motregnet datetime null, "
     "tvi_inserted datetime, tvi_unid uniqueidentifier null"},
    {"Temp_Varemottaklinje_Import", "t_varemottaklinje_i", "tvmi_vml_id",
     "tvmi_vml_id int, tvmi_vm_id int, tvmi_op_id int, tvmi_ik_ku_id int, tvmi_kassenr varchar(20)*, "
     "tvmi_va_id char(15)*, tvmi_antall float null, tvmi_pris float null, tvmi_helper int null, "
     "tvmi_inserted datetime, tvmi_unid uniqueidentifier null"},
    {"Temp_Timer_Import", "t_timer_i", "tti_id",
     "tti_id int, tti_ik_ku_id int, tti_kassenr varchar(20)*, tti_ika_id char(10)*, "
     "tti_godkjenn_gr_id int null, tti_tidinn smalldatetime, tti_tidut smalldatetime null, "
     "tti_tekst varchar(255)* null, tti_innmetode tinyint, tti_utmetode tinyint null, "
     "tti_korrigerttidinn smalldatetime null, tti_korrigerttidut smalldatetime null, tti_status tinyint, "
     "tti_manuell_tk_id int null, tti_trekkpause tinyint null, tti_syk_gr_id int null, tti_inserted datetime, "
     "tti_unid uniqueidentifier null"},
    {"Temp_Timerprkode_Import", "t_timerprkode_i", "ttpi_ti_id",
     "ttpi_ti_id int, ttpi_ik_ku_id int, ttpi_kassenr varchar(20)*, ttpi_tk_id int, "
     "ttpi_tid smalldatetime null, ttpi_inserted datetime, ttpi_unid uniqueidentifier null"},
    {"Temp_Grunntype_Import", "t_grunntype_i", "tgi_id",
     "tgi_id int, tgi_ik_ku_id int, tgi_kassenr int, tgi_navn varchar(50)*, tgi_inserted datetime, "
     "tgi_unid uniqueidentifier null"},
    {"Temp_Grunn_Import", "t_grunn_i", "tgi_id",
     "tgi_id int, tgi_ik_ku_id int, tgi_kassenr int, tgi_gt_id int, tgi_navn varchar(50)*, "
     "tgi_utskriftsflagg tinyint, tgi_inserted datetime, tgi_unid uniqueidentifier null"},
    {"Temp_Pengeenhet_Import", "t_pengeenhet_i", "tpi_id",
     "tpi_id int, tpi_ik_ku_id int, tpi_kassenr int, tpi_vu_Id char(3)*, tpi_navn varchar(30)*, "
     "tpi_verdi float, tpi_mynt bit, tpi_bilde image null, tpi_inserted datetime, "
     "tpi_unid uniqueidentifier null"},
    {"Temp_Kortutsteder_Import", "t_kortutsteder_i", "tki_id",
     "tki_id int, tki_ik_ku_id int, tki_kassenr int, tki_navn varchar(50)*, tki_konto int null, "
     "tki_inserted datetime, tki_unid uniqueidentifier null"},
    {"Temp_InternkundeAnsatt_Import", "t_internkundeansatt_i", "tikai_id",
     "tikai_id char(10)*, tikai_ik_ku_id int, tikai_kassenr int, tikai_pos_tp_id int null, "
     "tikai_navn varchar(50)*, tikai_aktiv tinyint, tikai_rabatt float, tikai_rabattkunpaaordpris tinyint, "
     "tikai_nivaa tinyint, tikai_ansattdato smalldatetime null, tikai_lonnskonto varchar(20)* null, "
     "tikai_personnr varchar(15)* null, tikai_inserted datetime, tikai_unid uniqueidentifier null"},
    {"Temp_Ordrelinjetekst_Import", "t_ordrelinjetekst_i", "tot_ol_id",
     "tot_ol_id int, tot_ik_ku_id int, tot_kassenr int, tot_navn varchar(50)*, tot_inserted datetime, "
     "tot_unid uniqueidentifier null"},
    {"Temp_Varebestilling_Import", "t_varebestilling_i", "tvi_id",
     "tvi_id int, tvi_ik_ku_id int, tvi_kassenr varchar(20), tvi_op_id int, tvi_ika_id char(10), "
     "tvi_tidspunkt smalldatetime, tvi_referanse varchar(30) null, tvi_status int null, tvi_inserted datetime, "
     "tvi_unid uniqueidentifier"},
    {"Temp_Varebestillinglinje_Import", "t_varebestillinglinje_i", "tvbi_id",
     "tvbi_id int, tvbi_va_id char(15), tvbi_vb_id int, tvbi_op_id int null, tvbi_ik_ku_id int, "
     "tvbi_kassenr varchar(20), tvbi_or_id int null, tvbi_antall float null, tvbi_inserted datetime, "
     "tvbi_unid uniqueidentifier"},
    {"Temp_Utbetaling_Import", "t_utbetaling_i", "tui_bt_id",
     "tui_bt_id int, tui_ik_ku_id int, tui_kassenr varchar(20)*, tui_forsendelsesnr int null, "
     "tui_oppdragsnr int null, tui_kundenavn varchar(25)* null, tui_telefon varchar(30)* null, "
     "tui_epost varchar(255)* null, tui_adresse varchar(512)* null, tui_konto char(11)* null, "
     "tui_status tinyint default 0, tui_inserted datetime, tui_unid uniqueidentifier null"},
};

// The columns of a table as the server tells them, in the form of the table above; the stars are in the text alone,
// since a column without one comes out the same in a database of its own.
QString columnsOf(const ChainRun& run, const StagingTable& table, const QString& created) {
    QStringList columns;
    for (const std::string& row : run.backOfficeRows(
             std::string(
                 "SELECT COLUMN_NAME, DATA_TYPE, CASE WHEN DATA_TYPE LIKE '%char' THEN CHARACTER_MAXIMUM_LENGTH "
                 "END, IS_NULLABLE, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = '") +
             table.name + "' ORDER BY ORDINAL_POSITION")) {
        const QStringList cells = QString::fromStdString(row).split(QStringLiteral(" | "));
        QString column = cells[0] + u' ' + cells[1];
        if (cells[2] != u"NULL") column += u'(' + cells[2] + u')';
        const QRegularExpression collated(QStringLiteral(R"(^\s*%1 \S+ COLLATE Database_Default )").arg(cells[0]),
                                          QRegularExpression::MultilineOption);
        if (collated.match(created).hasMatch()) column += u'*';
        if (cells[3] == u"YES") column += QStringLiteral(" null");
        if (cells[4] != u"NULL") column += QStringLiteral(" default ") + QString(cells[4]).remove(u'(').remove(u')');
        columns << column;
    }
    return columns.join(QStringLiteral(", "));
}

TEST(StagingTables, ThatTheDriverMakesAreAsThePostingExpectsThem) {
    ChainRun run({.departments = 1, .tills = 0, .days = 0});
    for (const StagingTable& table : kStagingTables)
        run.chain.runInBackOffice(std::string("IF OBJECT_ID('dbo.") + table.name + "') IS NOT NULL DROP TABLE " +
                                  table.name);
    run.target.Open();
    db::Query create(&run.target);
    create.ParamCheck = false;
    create.SQL = createTempTablesSql();
    create.ExecSQL();

    const QString text = create.SQL.join(u'\n');
    for (const StagingTable& table : kStagingTables) {
        const auto from = text.indexOf(QStringLiteral("CREATE TABLE dbo.%1 ").arg(QLatin1String(table.name)));
        const QString created = text.mid(from, text.indexOf(QStringLiteral("CREATE INDEX"), from) - from);
        EXPECT_EQ(columnsOf(run, table, created), QString::fromUtf8(table.columns)) << table.name;
        EXPECT_EQ(run.backOfficeRows(std::string("SELECT i.name, c.name FROM sys.indexes i JOIN sys.index_columns k ON "
                                                 "k.object_id = i.object_id AND k.index_id = i.index_id JOIN "
                                                 "sys.columns c ON c.object_id = k.object_id AND c.column_id = "
                                                 "k.column_id WHERE i.object_id = OBJECT_ID('dbo.") +
                                     table.name + "')"),
                  std::vector<std::string>{std::string(table.index) + " | " + table.key})
            << table.name;
    }
}

}  // namespace
}  // namespace torvik::test
