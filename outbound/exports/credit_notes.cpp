// Credit notes that the till may have to redeem, and the back office's note of which it has sent where. Which those are
// is the work of the back office's GetPosTilgodelapp; the note is made of all valid ones, sent or not.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Piece kNotes[] = {{"exec GetPosTilgodelapp %d, '%s'", kAlways, {Arg::Ik_Ku_ID, Arg::KasseNr}}};

constexpr Action kLoad[] = {
    StartClock{},
    SetTransformation{"POSTilgodelapp"},
    LoadTable{"Tilgodelapp", "TGLAPPEKSPORT", kNotes, false},
};

// Positional: the till's tilgodelapp has these twelve columns in this order.
constexpr Piece kBody[] = {
    {R"(declare @err int
insert into tilgodelapp
select e.tg_id, e.tg_avdnr, e.tg_kassenr, e.tg_an_id, e.tg_or_id, e.tg_belop, e.tg_gyldigtil, e.tg_bet_avdnr,
e.tg_bet_kassenr, e.tg_bet_an_id, e.tg_bt_id, e.tg_synktidspunkt
from tglappeksport e left outer join tilgodelapp t on e.tg_id = t.tg_id COLLATE DATABASE_DEFAULT and e.tg_avdnr = t.tg_avdnr COLLATE DATABASE_DEFAULT and e.tg_kassenr = t.tg_kassenr COLLATE DATABASE_DEFAULT
where (t.tg_id is null and t.tg_avdnr is null and t.tg_kassenr is null)
select @err = @@error)"},
    {R"(update t
set t.tg_id = e.tg_id, t.tg_avdnr = e.tg_avdnr, t.tg_kassenr = e.tg_kassenr,
t.tg_an_id = e.tg_an_id, t.tg_or_id = e.tg_or_id, t.tg_belop = e.tg_belop,
t.tg_gyldigtil = e.tg_gyldigtil, t.tg_bet_avdnr = e.tg_bet_avdnr, t.tg_bet_kassenr = e.tg_bet_kassenr,
t.tg_bet_an_id = e.tg_bet_an_id, t.tg_bt_id = e.tg_bt_id, t.tg_synktidspunkt = e.tg_synktidspunkt
from tilgodelapp t join tglappeksport e on t.tg_id = e.tg_id COLLATE DATABASE_DEFAULT and t.tg_avdnr = e.tg_avdnr COLLATE DATABASE_DEFAULT and t.tg_kassenr = e.tg_kassenr COLLATE DATABASE_DEFAULT
select @err = @@error)"},
};

// What this till has not yet handed in is newer than what the back office holds: it is taken out of the work table, and
// the table stays locked until the notes are merged, so that one redeemed meanwhile waits and keeps its mark.
// Where taking out fails the batch ends, for what was not taken out would be merged.
constexpr Piece kCall[] = {
    {"set xact_abort on"},
    {"begin transaction"},
    {R"(delete e
from tglappeksport e join tilgodelapp t with (tablockx, holdlock) on e.tg_id = t.tg_id COLLATE DATABASE_DEFAULT and e.tg_avdnr = t.tg_avdnr COLLATE DATABASE_DEFAULT and e.tg_kassenr = t.tg_kassenr COLLATE DATABASE_DEFAULT
where t.tg_synktidspunkt is null)"},
    {"set xact_abort off"},
    {R"(declare @err int
exec @err = InsertPOSTilgodelapp)"},
    {"commit transaction"},
};

constexpr Procedure kInsertPOSTilgodelapp{"InsertPOSTilgodelapp", kBody, "/*tilgodelapp*/", kCall};

constexpr Action kMerge[] = {
    SetTransformation{"Tilgodelapp"},
    Install{&kInsertPOSTilgodelapp},
    DriverTask::AskBackOffice,
    Run{&kInsertPOSTilgodelapp},
};

constexpr Piece kNote[] = {
    {R"(DECLARE @Ik_Ku_Id int
DECLARE @Kassenr char(10)
DECLARE @SessionID varchar(10))"},
    {"SELECT @Kassenr = '%s'", kAlways, {Arg::KasseNr}},
    {"SELECT @Ik_Ku_Id= %d", kAlways, {Arg::Ik_Ku_ID}},
    {"SELECT @SessionID = '%s'", kAlways, {Arg::SessionID}},
    {R"(INSERT INTO InternKundeKasseOverfort (Ikko_Ikk_Ik_Ku_ID,Ikko_Ikk_Kassenummer,Ikko_Id,Ikko_Type,Ikko_AvdNr,Ikko_Kassenr,Ikko_Tidspunkt)
SELECT @Ik_Ku_Id,@Kassenr,Tg_Id,'T',Tg_Avdnr,Tg_Kassenr,GETDATE()
from postilgodelapp tg
where TG_GYLDIGTIL > getdate() and
not exists (select * from InternkundeKasseOverfort iko
where iko.Ikko_Id=tg.tg_Id AND iko.Ikko_Ikk_Ik_Ku_ID=@Ik_Ku_Id
AND iko.Ikko_Ikk_Kassenummer=@Kassenr AND iko.Ikko_Type = 'T'))"},
};

constexpr Action kNoteBatch[] = {SetTransformation{"Overført Tilgodelapp"}, BackOfficeBatch{kNote}};

}  // namespace

constinit const Actions kSendCreditNotes{kLoad};
constinit const Actions kMergeCreditNotes{kMerge};
constinit const Actions kNoteCreditNotes{kNoteBatch};

}  // namespace torvik
