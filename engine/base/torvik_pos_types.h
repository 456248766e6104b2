// The enumerations and event signatures of the engine object.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>

#include "engine/base/enum_set.h"

class QObject;

namespace torvik {

namespace db {
class Query;
}

enum TAuthMethod { amTrusted, amSQL };
enum TVareOppdateringUtvalg { vopIngen, vopEndrede, vopAlle };
enum TTask { taHent, taSend };
using TTasks = EnumSet<TTask>;
enum TInitializeItem { nutvOppgjor, nutvVare, nutvKunde, nutvAnsatt };
using TInitializeItems = EnumSet<TInitializeItem>;

using TNotifyEvent = std::function<void(QObject* Sender)>;
// Percent is 0 to 100.
using TProgressEvent = std::function<void(QObject* Sender, int Percent, const QString& Text)>;
using TVareOppdatert = std::function<void(QObject* Sender)>;
// The open query with the rows, and the roster's query on the till's row.
using TSqlScriptReturnDataEvent = std::function<void(QObject* Sender, db::Query& Data, db::Query& Roster)>;
using TTorvikPosIniReceivedEvent =
    std::function<void(const QString& AvdNr, const QString& Kassenr, const QStringList& Lines, const QString& Navn)>;
using TPackageEventsOnProgressEvent =
    std::function<void(QObject* Sender, const QString& Task, const QString& Message, int Percent)>;
using TPackageEventsOnStartEvent = std::function<void(QObject* Sender, const QString& Task)>;
// Level: 0 OK, 1 error, 2 warning, 4 anything else.
using TNewLogMessageEvent = std::function<void(QObject* Sender, const QString& Text, int Level, const QDateTime& At)>;

}  // namespace torvik
