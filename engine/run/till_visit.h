// What work at a till is handed: the till as its roster row told it when its turn came, the two sessions, and the parts
// of the engine that such work uses. Work of every higher box takes this or less. It is good for the one visit.
#pragma once

#include <QString>

#include "engine/base/engine_context.h"

namespace torvik {

namespace db {
class Query;
class Session;
}  // namespace db
class BackOffice;
class ItemNumbers;
class OperatorLog;
class RunControl;
class TAvdeling;
class TfraOppgjorStatus;
class TillConnection;

// Values, not the roster's cursor: that moves on, and is opened again when the back office has been lost.
struct TillIdentity {
    int Ik_Ku_Id = 0;         // the department's customer id
    QString Avdelingsnummer;  // trimmed, like the three that follow
    QString Kassenummer;
    QString Ku_Navn;
    QString Ku_Adresse1;      // the store's display name
    QString Ikk_Kassenummer;  // as the column holds it, trailing blanks and all
    qint64 Ik_Properties = 0;

    // Of the roster's current row.
    [[nodiscard]] static TillIdentity Of(const db::Query& roster);
};

struct TillVisit {
    TillIdentity Till;
    db::Session& TillSession;    // "source" in the engine's own names
    db::Session& OfficeSession;  // "target"
    QString DbVersion;           // in_dbversion of the till

    TillConnection& Connection;
    BackOffice& Office;
    ItemNumbers& Items;
    OperatorLog& Log;
    RunControl& Control;
    TfraOppgjorStatus* Status;  // null without a status frame
    TAvdeling& Roster;          // owns what is made for the till until the walk moves on

    // Seam, Options, Events and Sender.
    EngineContext Context;
};

// What a fetch has left half done at the connected till is resolved by the engine's OnResolveTill; raises where the
// till cannot be served before somebody has decided. The walk calls it; work that connects itself does.
void ResolveTill(TillVisit& visit);

}  // namespace torvik
