// The staging tables of the fetch, made where the back office lacks them; what stands there is left as it is, with the
// columns that the back office's own upgrades have added.
#include "inbound/transfer/staging_tables.h"

namespace torvik {

namespace {

constexpr const char* kCreateTempTables[] = {
    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Betalingform_Import'))
BEGIN
CREATE TABLE dbo.Temp_Betalingform_Import (
  tbfi_id int not null,
  tbfi_ik_ku_id int not null,
  tbfi_kassenr int not null,
  tbfi_ko_id int null,
  tbfi_navn char(50) not null,
  tbfi_aktiv tinyint not null,
  tbfi_skuff tinyint not null,
  tbfi_synlig tinyint not null,
  tbfi_paavirkersalg tinyint not null,
  tbfi_vu_id char(3) not null,
  tbfi_inserted datetime not null,
  tbfi_unid uniqueidentifier null
)
CREATE INDEX t_betalingform_i ON dbo.Temp_Betalingform_Import (tbfi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Loggtype_Import'))
BEGIN
CREATE TABLE dbo.Temp_Loggtype_Import (
  tlti_id int not null,
  tlti_ik_ku_id int not null,
  tlti_kassenr int not null,
  tlti_navn char(50) not null,
  tlti_inserted datetime not null,
  tlti_unid uniqueidentifier null
)
CREATE INDEX t_loggtype_i ON dbo.Temp_Loggtype_Import (tlti_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Oppgjor_Import'))
BEGIN
CREATE TABLE dbo.Temp_Oppgjor_Import (
  toi_op_id int not null,
  toi_ik_ku_id int not null,
  toi_kassenr int not null,
  toi_ika_id char(10) COLLATE Database_Default not null,
  toi_tidspunkt datetime not null,
  toi_oppdaterttidspunkt datetime null,
  toi_type varchar(15) not null,
  toi_status int not null,
  toi_tidspunktferdig datetime null,
  toi_antkunderinnom int null,
  toi_nattsafe_innkastnr varchar(50) null,
  toi_inserted datetime not null,
  toi_unid uniqueidentifier null,
  toi_kommentar varchar(1024) null
)
CREATE INDEX t_oppgjor_i ON dbo.Temp_Oppgjor_Import (toi_op_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Oppgjorlinje_Import'))
BEGIN
CREATE TABLE dbo.Temp_Oppgjorlinje_Import (
  toli_opl_id int not null,
  toli_ik_ku_id int not null,
  toli_kassenr int not null,
  toli_op_id int not null,
  toli_pe_id int not null,
  toli_vekslepenger float not null,
  toli_opptalt float not null,
  toli_faktisk float not null,
  toli_inserted datetime not null,
  toli_unid uniqueidentifier null
)
CREATE INDEX t_oppgjorlinje_i ON dbo.Temp_Oppgjorlinje_Import (toli_op_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Oppgjorbetaling_Import'))
BEGIN
CREATE TABLE dbo.Temp_Oppgjorbetaling_Import (
  tobi_op_id int not null,
  tobi_ik_ku_id int not null,
  tobi_kassenr varchar(20) COLLATE Database_Default not null,
  tobi_bf_id int not null,
  tobi_belop float not null,
  tobi_opptalt float not null,
  tobi_inserted datetime not null,
  tobi_unid uniqueidentifier null
)
CREATE INDEX t_oppgjorbetaling_i ON dbo.Temp_Oppgjorbetaling_Import (tobi_op_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ordre_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ordre_Import (
  toi_or_id int not null,
  toi_ik_ku_id int not null,
  toi_kassenr varchar(20) COLLATE Database_Default not null,
  toi_ku_id int not null,
  toi_op_id int not null,
  toi_ika_id char(10) COLLATE Database_Default not null,
  toi_ra_id char(20) COLLATE Database_Default null,
  toi_rabatt_ika_id char(10) COLLATE Database_Default null,
  toi_tidspunkt datetime not null,
  toi_tidspunktferdig datetime not null,
  toi_status int not null,
  toi_rekvisisjonsnummer varchar(30) COLLATE Database_Default null,
  toi_postnr varchar(10) COLLATE Database_Default null,
  toi_telefon varchar(20) COLLATE Database_Default null,
  toi_salgssum float null,
  toi_rabatt float null,
  toi_inserted datetime not null,
  toi_unid uniqueidentifier null,
  toi_statistikk_ika_id varchar(10) null,
  toi_varetelling bit null,
  toi_Or_Torvik_Or_Id int null
)
CREATE INDEX t_ordre_i ON dbo.Temp_Ordre_Import (toi_or_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ordrelinje_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ordrelinje_Import (
  toli_ol_id int not null,
  toli_ik_ku_id int not null,
  toli_kassenr varchar(20) COLLATE Database_Default not null,
  toli_or_id int not null,
  toli_va_id char(15) COLLATE Database_Default not null,
  toli_antall float not null,
  toli_rabatt float not null,
  toli_salgspris float not null,
  toli_mvasats float not null,
  toli_kostpris float not null,
  toli_slettet bit null,
  toli_mersalg bit not null,
  toli_status tinyint null,
  toli_inserted datetime not null,
  toli_unid uniqueidentifier null
)
CREATE INDEX t_ordrelinje_i ON dbo.Temp_Ordrelinje_Import (toli_ol_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ordregrunn_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ordregrunn_Import (
  tog_gr_id int not null,
  tog_or_id int not null,
  tog_ik_ku_id int not null,
  tog_kassenr varchar(20) COLLATE Database_Default not null,
  tog_inserted datetime not null,
  tog_unid uniqueidentifier null
)
CREATE INDEX t_ordregrunn_i ON dbo.Temp_Ordregrunn_Import (tog_gr_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ordrelinjegrunn_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ordrelinjegrunn_Import (
  tolg_gr_id int not null,
  tolg_ol_id int not null,
  tolg_ik_ku_id int not null,
  tolg_kassenr varchar(20) COLLATE Database_Default not null,
  tolg_inserted datetime not null,
  tolg_unid uniqueidentifier null
)
CREATE INDEX t_ordrelinjegrunn_i ON dbo.Temp_Ordrelinjegrunn_Import (tolg_gr_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Betaling_Import'))
BEGIN
CREATE TABLE dbo.Temp_Betaling_Import (
  tbi_bt_id int not null,
  tbi_ik_ku_id int not null,
  tbi_kassenr varchar(20) COLLATE Database_Default not null,
  tbi_bf_id int not null,
  tbi_or_id int not null,
  tbi_belop float not null,
  tbi_vu_kurs float null,
  tbi_inserted datetime not null,
  tbi_unid uniqueidentifier null
)
CREATE INDEX t_betaling_i ON dbo.Temp_Betaling_Import (tbi_bt_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Betalingbankinfo_Import'))
BEGIN
CREATE TABLE dbo.Temp_Betalingbankinfo_Import (
  tbbi_bbi_id int not null,
  tbbi_ik_ku_id int not null,
  tbbi_kassenr varchar(20) COLLATE Database_Default not null,
  tbbi_bt_id int not null,
  tbbi_ko_id int not null,
  tbbi_kortdata varchar(25) COLLATE Database_Default null,
  tbbi_tidsstempel char(14) COLLATE Database_Default null,
  tbbi_lojalitetsinfo varchar(100) COLLATE Database_Default null,
  tbbi_avstem_sesjonsnummer varchar(10) COLLATE Database_Default null,
  tbbi_inserted datetime not null,
  tbbi_unid uniqueidentifier null,
  tbbi_tranid varchar(30) null,
  tbbi_auth varchar(30) null
)
CREATE INDEX t_betalingbankinfo_i ON dbo.Temp_Betalingbankinfo_Import (tbbi_bbi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ekstraansattoppgjor_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ekstraansattoppgjor_Import (
  teaoi_eao_id int not null,
  teaoi_ik_ku_id int not null,
  teaoi_kassenr varchar(20) COLLATE Database_Default not null,
  teaoi_ika_id char(10) COLLATE Database_Default not null,
  teaoi_op_id int not null,
  teaoi_utlev_ika_id char(10) COLLATE Database_Default null,
  teaoi_navn varchar(50) COLLATE Database_Default not null,
  teaoi_tidspunkt datetime not null,
  teaoi_inserted datetime not null,
  teaoi_unid uniqueidentifier null
)
CREATE INDEX t_ekstraansattoppgjor_i ON dbo.Temp_Ekstraansattoppgjor_Import (teaoi_eao_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Logg_Import'))
BEGIN
CREATE TABLE dbo.Temp_Logg_Import (
  tli_lo_id int not null,
  tli_ik_ku_id int not null,
  tli_kassenr varchar(20) COLLATE Database_Default not null,
  tli_ika_id char(10) COLLATE Database_Default not null,
  tli_lt_id int not null,
  tli_op_id int null,
  tli_tidspunkt datetime not null,
  tli_merknader varchar(255) COLLATE Database_Default null,
  tli_inserted datetime not null,
  tli_unid uniqueidentifier null
)
CREATE INDEX t_logg_i ON dbo.Temp_Logg_Import (tli_lo_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Varemottak_Import'))
BEGIN
CREATE TABLE dbo.Temp_Varemottak_Import (
  tvi_vm_id int not null,
  tvi_ik_ku_id int not null,
  tvi_kassenr varchar(20) COLLATE Database_Default not null,
  tvi_ika_id char(10) COLLATE Database_Default not null,
  tvi_op_id int not null,
  tvi_tidspunkt smalldatetime not null,
  tvi_referanse varchar(30) COLLATE Database_Default null,
  tvi_motregnet datetime null,
  tvi_inserted datetime not null,
  tvi_unid uniqueidentifier null
)
CREATE INDEX t_varemottak_i ON dbo.Temp_Varemottak_Import (tvi_vm_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Varemottaklinje_Import'))
BEGIN
CREATE TABLE dbo.Temp_Varemottaklinje_Import (
  tvmi_vml_id int not null,
  tvmi_vm_id int not null,
  tvmi_op_id int not null,
  tvmi_ik_ku_id int not null,
  tvmi_kassenr varchar(20) COLLATE Database_Default not null,
  tvmi_va_id char(15) COLLATE Database_Default not null,
  tvmi_antall float null,
  tvmi_pris float null,
  tvmi_helper int null,
  tvmi_inserted datetime not null,
  tvmi_unid uniqueidentifier null
)
CREATE INDEX t_varemottaklinje_i ON dbo.Temp_Varemottaklinje_Import (tvmi_vml_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Timer_Import'))
BEGIN
CREATE TABLE dbo.Temp_Timer_Import (
  tti_id int not null,
  tti_ik_ku_id int not null,
  tti_kassenr varchar(20) COLLATE Database_Default not null,
  tti_ika_id char(10) COLLATE Database_Default not null,
  tti_godkjenn_gr_id int null,
  tti_tidinn smalldatetime not null,
  tti_tidut smalldatetime null,
  tti_tekst varchar(255) COLLATE Database_Default null,
  tti_innmetode tinyint not null,
  tti_utmetode tinyint null,
  tti_korrigerttidinn smalldatetime null,
  tti_korrigerttidut smalldatetime null,
  tti_status tinyint not null,
  tti_manuell_tk_id int null,
  tti_trekkpause tinyint null,
  tti_syk_gr_id int null,
  tti_inserted datetime not null,
  tti_unid uniqueidentifier null
)
CREATE INDEX t_timer_i ON dbo.Temp_Timer_Import (tti_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Timerprkode_Import'))
BEGIN
CREATE TABLE dbo.Temp_Timerprkode_Import (
  ttpi_ti_id int not null,
  ttpi_ik_ku_id int not null,
  ttpi_kassenr varchar(20) COLLATE Database_Default not null,
  ttpi_tk_id int not null,
  ttpi_tid smalldatetime null,
  ttpi_inserted datetime not null,
  ttpi_unid uniqueidentifier null
)
CREATE INDEX t_timerprkode_i ON dbo.Temp_Timerprkode_Import (ttpi_ti_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Grunntype_Import'))
BEGIN
CREATE TABLE dbo.Temp_Grunntype_Import (
  tgi_id int not null,
  tgi_ik_ku_id int not null,
  tgi_kassenr int not null,
  tgi_navn varchar(50) COLLATE Database_Default not null,
  tgi_inserted datetime not null,
  tgi_unid uniqueidentifier null
)
CREATE INDEX t_grunntype_i ON dbo.Temp_Grunntype_Import (tgi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Grunn_Import'))
BEGIN
CREATE TABLE dbo.Temp_Grunn_Import (
  tgi_id int not null,
  tgi_ik_ku_id int not null,
  tgi_kassenr int not null,
  tgi_gt_id int not null,
  tgi_navn varchar(50) COLLATE Database_Default not null,
  tgi_utskriftsflagg tinyint not null,
  tgi_inserted datetime not null,
  tgi_unid uniqueidentifier null
)
CREATE INDEX t_grunn_i ON dbo.Temp_Grunn_Import (tgi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Pengeenhet_Import'))
BEGIN
CREATE TABLE dbo.Temp_Pengeenhet_Import (
  tpi_id int not null,
  tpi_ik_ku_id int not null,
  tpi_kassenr int not null,
  tpi_vu_Id char(3) COLLATE Database_Default not null,
  tpi_navn varchar(30) COLLATE Database_Default not null,
  tpi_verdi float not null,
  tpi_mynt bit not null,
  tpi_bilde image null,
  tpi_inserted datetime not null,
  tpi_unid uniqueidentifier null
)
CREATE INDEX t_pengeenhet_i ON dbo.Temp_Pengeenhet_Import (tpi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Kortutsteder_Import'))
BEGIN
CREATE TABLE dbo.Temp_Kortutsteder_Import (
  tki_id int not null,
  tki_ik_ku_id int not null,
  tki_kassenr int not null,
  tki_navn varchar(50) COLLATE Database_Default not null,
  tki_konto int null,
  tki_inserted datetime not null,
  tki_unid uniqueidentifier null
)
CREATE INDEX t_kortutsteder_i ON dbo.Temp_Kortutsteder_Import (tki_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_InternkundeAnsatt_Import'))
BEGIN
CREATE TABLE dbo.Temp_InternkundeAnsatt_Import (
  tikai_id char(10) COLLATE Database_Default not null,
  tikai_ik_ku_id int not null,
  tikai_kassenr int not null,
  tikai_pos_tp_id int null,
  tikai_navn varchar(50) COLLATE Database_Default not null,
  tikai_aktiv tinyint not null,
  tikai_rabatt float not null,
  tikai_rabattkunpaaordpris tinyint not null,
  tikai_nivaa tinyint not null,
  tikai_ansattdato smalldatetime null,
  tikai_lonnskonto varchar(20) COLLATE Database_Default null,
  tikai_personnr varchar(15) COLLATE Database_Default null,
  tikai_inserted datetime not null,
  tikai_unid uniqueidentifier null
)
CREATE INDEX t_internkundeansatt_i ON dbo.Temp_InternkundeAnsatt_Import (tikai_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Ordrelinjetekst_Import'))
BEGIN
CREATE TABLE dbo.Temp_Ordrelinjetekst_Import (
  tot_ol_id int not null,
  tot_ik_ku_id int not null,
  tot_kassenr int not null,
  tot_navn varchar(50) COLLATE Database_Default not null,
  tot_inserted datetime not null,
  tot_unid uniqueidentifier null
)
CREATE INDEX t_ordrelinjetekst_i ON dbo.Temp_Ordrelinjetekst_Import (tot_ol_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Varebestilling_Import'))
BEGIN
CREATE TABLE dbo.Temp_Varebestilling_Import (
  tvi_id int not null,
  tvi_ik_ku_id int not null,
  tvi_kassenr varchar(20) not null,
  tvi_op_id int not null,
  tvi_ika_id char(10) not null,
  tvi_tidspunkt smalldatetime not null,
  tvi_referanse varchar(30) null,
  tvi_status int null,
  tvi_inserted datetime not null,
  tvi_unid uniqueidentifier not null
)
CREATE INDEX t_varebestilling_i ON dbo.Temp_Varebestilling_Import (tvi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Varebestillinglinje_Import'))
BEGIN
CREATE TABLE dbo.Temp_Varebestillinglinje_Import (
  tvbi_id int not null,
  tvbi_va_id char(15) not null,
  tvbi_vb_id int not null,
  tvbi_op_id int null,
  tvbi_ik_ku_id int not null,
  tvbi_kassenr varchar(20) not null,
  tvbi_or_id int null,
  tvbi_antall float null,
  tvbi_inserted datetime not null,
  tvbi_unid uniqueidentifier not null
)
CREATE INDEX t_varebestillinglinje_i ON dbo.Temp_Varebestillinglinje_Import (tvbi_id)
END)",

    R"(IF NOT EXISTS (SELECT 1 FROM  sysobjects WHERE  id = object_id('dbo.Temp_Utbetaling_Import'))
BEGIN
CREATE TABLE dbo.Temp_Utbetaling_Import (
  tui_bt_id int not null,
  tui_ik_ku_id int not null,
  tui_kassenr varchar(20) COLLATE Database_Default not null,
  tui_forsendelsesnr int null,
  tui_oppdragsnr int null,
  tui_kundenavn varchar(25) COLLATE Database_Default null,
  tui_telefon varchar(30) COLLATE Database_Default null,
  tui_epost varchar(255) COLLATE Database_Default null,
  tui_adresse varchar(512) COLLATE Database_Default null,
  tui_konto char(11) COLLATE Database_Default null,
  tui_status tinyint not null default 0,
  tui_inserted datetime not null,
  tui_unid uniqueidentifier null
)
CREATE INDEX t_utbetaling_i ON dbo.Temp_Utbetaling_Import (tui_bt_id)
END)",
};

}  // namespace

QStringList createTempTablesSql() {
    QStringList sql;
    for (const char* table : kCreateTempTables) sql << QString::fromUtf8(table);
    return sql;
}

}  // namespace torvik
