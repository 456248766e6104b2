// Staff with their time profiles and access cards. A department of the customer group "Franchise" gets its own staff,
// any other that of all departments. No row of Ansatt is deleted; a card goes when its holder is no longer sent.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kTimeProfiles[] = {
    {"select pos_tp_id Tpi_ID, Pos_Tp_Navn Tpi_Navn, Pos_Tp_Stemplingsregel Tpi_Stemplingsregel From POSTIMEPROFIL"}};

constexpr Action kLoadTimeProfiles[] = {LoadTable{.caption = "Timeprofil",
                                                  .table = "TimeprofilImport",
                                                  .query = kTimeProfiles,
                                                  .readWith = ReadWith::OtherRegisters}};

constexpr WorkTable kAnsattImport{"ANSATTIMPORT", R"(create table ANSATTIMPORT (
  IKAI_ID char(10) not null,
  IKAI_IK_KU_ID int not null,
  IKAI_NAVN varchar(50) not null,
  IKAI_VISNINGSNAVN varchar(50),
  IKAI_KORTNUMMER varchar(30) null,
  IKAI_AKTIV tinyint not null,
  IKAI_NIVAA tinyint not null default 1,
  IKAI_RABATT float,
  IKAI_RABKUNPAAORDPRIS tinyint,
  IKAI_AVDNR varchar(20),
  Ikai_AnsattDato datetime null,
  Ikai_Tp_Id int not null,
  Ikai_Pi_Id int null,
  Ikai_Maks_Rabatt decimal(18,4) null
)
create index IKAI_ID on ANSATTIMPORT (IKAI_ID)
delete ANSATTIMPORT)"};

constexpr const WorkTable* kTables[] = {&kAnsattImport};

constexpr Action kCreate[] = {CreateTables{kTables}};

constexpr Piece kStaff[] = {{R"(select ika_id AS IKAI_ID,
  ika_ik_ku_id AS IKAI_IK_KU_ID,
  ika_navn AS IKAI_NAVN,
  coalesce(ika_visningsnavn,'Ikke oppgitt') AS IKAI_VISNINGSNAVN,
  ika_kortnummer AS IKAI_KORTNUMMER,
  ika_aktiv AS IKAI_AKTIV,
  ika_nivaa AS IKAI_NIVAA,
  ika_rabatt AS IKAI_RABATT,
  ika_rabattkunpaaordpris AS IKAI_RABKUNPAAORDPRIS,
  ik_avdelingsnummer AS IKAI_AVDNR,
  ika_ansattdato AS Ikai_AnsattDato,
  coalesce(ika_pos_tp_id,1) AS Ikai_Tp_Id,
  ika_pi_id AS Ikai_Pi_Id,
  Ika_Maks_rabatt AS Ikai_Maks_Rabatt
from internkundeansatt join Internkunde ON (Ika_Ik_Ku_Id=Ik_Ku_Id)
 where  Ika_Ik_Ku_Id = %d
 OR not exists ( select 1 from kundegruppe join kundekundegruppe ON (kk_kg_id=kg_id)
WHERE kk_ku_id= %d and Kg_Navn='Franchise'))",
                             kAlways,
                             {Arg::Ik_Ku_ID, Arg::Ik_Ku_ID}}};

constexpr Action kLoadStaff[] = {
    LoadTable{.caption = "ANSATT", .table = "ANSATTIMPORT", .query = kStaff, .readWith = ReadWith::OtherRegisters}};

// Price categories come first, so that a new clerk gets one at the following send. A card is deleted where its holder
// has another number or its number another holder; a number that is null fails both tests, and its card stays.
constexpr Piece kMerge[] = {
    {R"(if (select in_dbversion from innstillinger) >= '119.0'
begin
update Ansatt set An_Pi_Id = Ikai_Pi_Id
from AnsattImport join priskategori on Ikai_Pi_Id = Pi_Id
where An_Id = Ikai_Id
end)"},
    {R"(update Timeprofil set TP_NAVN = Tpi_Navn, TP_STEMPLINGSREGEL = Tpi_Stemplingsregel
from TimeprofilImport
where Tp_Id = Tpi_Id)"},
    {R"(insert into Timeprofil (TP_ID, TP_NAVN, TP_STEMPLINGSREGEL)
select Tpi_ID, Tpi_Navn, Tpi_Stemplingsregel from TimeprofilImport left outer join Timeprofil t on Tpi_ID = t.Tp_ID
where t.Tp_Id is null)"},
    {R"(update Ansatt set An_Navn = Ikai_Visningsnavn, An_Aktiv = Ikai_Aktiv, An_Rabatt = Ikai_Rabatt,
An_RabKunPaaOrdPris = Ikai_RabKunPaaOrdPris, An_Nivaa = Ikai_Nivaa, An_AvdNr = Ikai_AvdNr,
An_AnsattDato = Ikai_AnsattDato, An_LonnsKOnto = null, An_Personnr = null,
An_Tp_Id = Ikai_Tp_Id, An_Maks_Rabatt = Ikai_Maks_Rabatt
from AnsattImport
where An_Id = Ikai_Id)"},
    {R"(insert into Ansatt (An_Id,An_Navn,An_Aktiv,An_Rabatt,An_RabKunPaaOrdPris,An_Nivaa,An_Avdnr,An_AnsattDato,
An_Tp_Id, An_Maks_Rabatt)
select Ikai_Id,Ikai_Visningsnavn,Ikai_Aktiv,Ikai_Rabatt,Ikai_RabKunPaaOrdPris,Ikai_Nivaa,Ikai_Avdnr,Ikai_AnsattDato,
Ikai_Tp_Id,Ikai_Maks_Rabatt
from AnsattImport left outer join Ansatt a on a.An_Id = Ikai_Id
where a.An_Id is null)"},
    {"delete from adgangskort from ansattimport where (ikai_kortnummer<>ak_id) and (ak_an_id=ikai_id)"},
    {"delete from adgangskort from ansattimport where (ikai_kortnummer=ak_id) and (ak_an_id<>ikai_id)"},
    {R"(update a
set a.ak_id = i.ikai_kortnummer, a.ak_an_id = i.ikai_id, a.ak_aktiv = i.ikai_aktiv
from adgangskort a join ansattimport i on a.ak_an_id = i.ikai_id
where i.ikai_kortnummer is not null)"},
    {R"(insert into adgangskort
select distinct i.ikai_kortnummer,i.ikai_id,i.ikai_aktiv from ansattimport i  left outer join adgangskort a on i.ikai_id = a.ak_an_id
where a.ak_id is null and i.ikai_kortnummer is not null and i.ikai_kortnummer<>''
and not exists (select 1 from ADGANGSKORT where AK_ID = i.IKAI_KORTNUMMER and AK_AN_ID = i.IKAI_ID))"},
    {R"(delete  from adgangskort
where not  exists
(select * from ansattimport where ansattimport.ikai_id = adgangskort.ak_an_id))"},
};

constexpr Action kMergeBatch[] = {TillBatch{kMerge}};

}  // namespace

constinit const Actions kSendTimeProfiles{kLoadTimeProfiles};
constinit const Actions kCreateStaffTable{kCreate};
constinit const Actions kSendStaff{kLoadStaff};
constinit const Actions kMergeStaff{kMergeBatch};

}  // namespace torvik
