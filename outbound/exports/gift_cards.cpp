// Gift cards that the till may have to redeem, and the back office's note of which cards it has sent where. Which cards
// those are is the work of the back office's GetPosGavekort; the note is made of all valid cards, sent or not.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kCards[] = {{"exec GetPosGavekort %d, '%s'", kAlways, {Arg::Ik_Ku_ID, Arg::KasseNr}}};

constexpr Action kLoad[] = {
    StartClock{},
    SetTransformation{"PosGavekort"},
    LoadTable{"Gavekort", "GKORTEKSPORT", kCards, false},
};

// Positional: the till's gavekort has these twelve columns in this order.
constexpr Piece kBody[] = {
    {R"(declare @err int
insert into gavekort
select e.ga_id, e.ga_avdnr, e.ga_kassenr, e.ga_an_id, isnull(e.ga_ol_id,-1), e.ga_belop, e.ga_gyldigtil, e.ga_bet_avdnr,
e.ga_bet_kassenr, e.ga_bet_an_id, e.ga_bt_id, e.ga_synktidspunkt
from gkorteksport e left outer join gavekort g on e.ga_id = g.ga_id COLLATE DATABASE_DEFAULT and e.ga_avdnr = g.ga_avdnr COLLATE DATABASE_DEFAULT and e.ga_kassenr = g.ga_kassenr COLLATE DATABASE_DEFAULT
where (g.ga_id is null and g.ga_avdnr is null and g.ga_kassenr is null)
select @err = @@error)"},
    {R"(update g
set g.ga_id = e.ga_id, g.ga_avdnr = e.ga_avdnr, g.ga_kassenr = e.ga_kassenr,
g.ga_an_id = e.ga_an_id, g.ga_ol_id = e.ga_ol_id, g.ga_belop = e.ga_belop,
g.ga_gyldigtil = e.ga_gyldigtil, g.ga_bet_avdnr = e.ga_bet_avdnr, g.ga_bet_kassenr = e.ga_bet_kassenr,
g.ga_bet_an_id = e.ga_bet_an_id, g.ga_bt_id = e.ga_bt_id, g.ga_synktidspunkt = e.ga_synktidspunkt
from gavekort g join gkorteksport e on g.ga_id = e.ga_id COLLATE DATABASE_DEFAULT and g.ga_avdnr = e.ga_avdnr COLLATE DATABASE_DEFAULT and g.ga_kassenr = e.ga_kassenr COLLATE DATABASE_DEFAULT
select @err = @@error)"},
};

// What this till has not yet handed in is newer than what the back office holds: it is taken out of the work table, and
// the table stays locked until the cards are merged, so that a card redeemed meanwhile waits and keeps its mark.
// Where taking out fails the batch ends, for what was not taken out would be merged.
constexpr Piece kCall[] = {
    {"set xact_abort on"},
    {"begin transaction"},
    {R"(delete e
from gkorteksport e join gavekort g with (tablockx, holdlock) on e.ga_id = g.ga_id COLLATE DATABASE_DEFAULT and e.ga_avdnr = g.ga_avdnr COLLATE DATABASE_DEFAULT and e.ga_kassenr = g.ga_kassenr COLLATE DATABASE_DEFAULT
where g.ga_synktidspunkt is null)"},
    {"set xact_abort off"},
    {R"(declare @err int
exec @err = InsertPOSGavekort)"},
    {"commit transaction"},
};

constexpr Procedure kInsertPOSGavekort{"InsertPOSGavekort", kBody, "/*gavekort*/", kCall};

constexpr Action kMerge[] = {
    SetTransformation{"Gavekort"},
    Install{&kInsertPOSGavekort},
    DriverTask::AskBackOffice,
    Run{&kInsertPOSGavekort},
};

// A card is valid while its end is in the future; without an end, or with one before 1980, for a year from when it came
// in.
constexpr Piece kNote[] = {
    {R"(DECLARE @Ik_Ku_Id int
DECLARE @Kassenr char(10)
DECLARE @SessionID varchar(10))"},
    {"SELECT @Kassenr = '%s'", kAlways, {Arg::KasseNr}},
    {"SELECT @Ik_Ku_Id= %d", kAlways, {Arg::Ik_Ku_ID}},
    {"SELECT @SessionID = '%s'", kAlways, {Arg::SessionID}},
    {R"(INSERT INTO InternKundeKasseOverfort (Ikko_Ikk_Ik_Ku_ID,Ikko_Ikk_Kassenummer,Ikko_Id,Ikko_Type,Ikko_AvdNr,Ikko_Kassenr,Ikko_Tidspunkt)
SELECT @Ik_Ku_Id,@Kassenr,Ga_Id,'G',Ga_Avdnr,Ga_Kassenr,GETDATE()
from posgavekort pg
where (case when (isnull(GA_GYLDIGTIL,'19050531') < '19800101') then DATEADD(year,1,GA_SYNKTIDSPUNKT) else GA_GYLDIGTIL end) > getdate() and
not exists (select * from InternkundeKasseOverfort iko
where iko.Ikko_Id=pg.ga_Id AND iko.Ikko_Ikk_Ik_Ku_ID=@Ik_Ku_Id
AND iko.Ikko_Ikk_Kassenummer=@Kassenr AND iko.Ikko_Type = 'G'))"},
};

constexpr Action kNoteBatch[] = {SetTransformation{"Overført Gavekort"}, BackOfficeBatch{kNote}};

}  // namespace

constinit const Actions kSendGiftCards{kLoad};
constinit const Actions kMergeGiftCards{kMerge};
constinit const Actions kNoteGiftCards{kNoteBatch};

}  // namespace torvik
