// The frame of a send: what is read first, the choice of the items that go, and its removal at the end.
#include "outbound/exports/exports.h"

namespace torvik {

namespace {

constexpr Action kFirst[] = {DriverTask::GetGlobalVariables};
constexpr Action kSecond[] = {DriverTask::DrawSessionID};
constexpr Action kThird[] = {StartClock{}, DriverTask::ReadTillVersion};

// What failed sends of any till have left behind.
constexpr Piece kDeleteOldVareEksport[] = {{"DELETE FROM VareEksport WHERE Ve_InsDato < GETDATE()-1"}};

constexpr Action kPrepare[] = {
    SetTransformation{"Kassevare"},
    Report{"Forbereder vareeksport", 1, true, 100},
    BackOfficeBatch{kDeleteOldVareEksport},
    DriverTask::KasseVareAlle,
    // 100 is no multiple of 1000: this report reaches nobody.
    Report{"Vareeksport klargjort", 100, false, 100},
};

constexpr Piece kDeleteSession[] = {{"delete from Vareeksport where Ve_SesjonID = '%s'", kAlways, {Arg::SessionID}}};

constexpr Action kEnd[] = {BackOfficeBatch{kDeleteSession}};

// The rows have just been deleted: this finds none.
constexpr Piece kUpdateInsDato[] = {
    {"UPDATE VareEksport SET Ve_InsDato = GETDATE() WHERE Ve_SesjonId='%s'", kAlways, {Arg::SessionID}}};

constexpr Action kExportTime[] = {SetTransformation{"ExportTime"}, BackOfficeBatch{kUpdateInsDato}};

}  // namespace

constinit const Actions kGetGlobalVariables{kFirst};
constinit const Actions kDrawSessionID{kSecond};
constinit const Actions kReadTillVersion{kThird};
constinit const Actions kPrepareVareEksport{kPrepare};
constinit const Actions kDeleteVareEksport{kEnd};
constinit const Actions kNoteExportTime{kExportTime};

}  // namespace torvik
