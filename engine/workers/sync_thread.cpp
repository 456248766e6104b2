// The actions as a table, and the walk from the till's identity to the row in the back office's queue.
#include "engine/workers/sync_thread.h"

#include <QFileInfo>
#include <array>

#include "engine/base/abort.h"
#include "engine/db/statement_text.h"
#include "engine/db/udl.h"

namespace torvik {

namespace {

constexpr int kConnectSeconds = 10;
const QString kFileName = QStringLiteral("FILE NAME=");

struct Action {
    TSyncAction action;
    const char16_t* command;
    const char16_t* parameter;  // null: none
};

// What this side fetches is a send command to the other side, and the other way about; a credit note's moment goes by
// the gift card's name.
constexpr std::array<Action, 6> kActions{{
    {saNone, u"", nullptr},
    {saSendGavekortOgTilgodelapper, u"", nullptr},
    {saHentGavekort, u"SEND_GAVEKORT", u"GA_ID"},
    {saHentTilgodelapp, u"SEND_TILGODELAPP", u"TG_ID"},
    {saSendGavekort, u"HENT_GAVEKORT", u"GA_SYNKTIDSPUNKT"},
    {saSendTilgodelapp, u"HENT_TILGODELAPP", u"GA_SYNKTIDSPUNKT"},
}};

// Looked for before the worker joins its list: without a data link there is no worker.
TThreadCollection& withDataLink(TThreadCollection& list, const QString& file) {
    if (!QFileInfo::exists(file)) throw EngineError(QStringLiteral("Ikke fullført. Filen %1 mangler").arg(file));
    return list;
}

QString dataLink(const QString& folder) {
    return folder + QStringLiteral("Torvik.UDL");
}

}  // namespace

TSyncThread::TSyncThread(bool CreateSuspended, TThreadCollection& ThreadList, const QString& folder)
    : TTorvikPosThread(CreateSuspended, withDataLink(ThreadList, dataLink(folder))) {
    FPOSSession.SetConnectionTimeout(kConnectSeconds);
    FPOSSession.SetLoginPrompt(false);
    FPOSQuery.CursorType = db::ReadMode::KeySet;
    SetBackOfficeConnectionString(kFileName + dataLink(folder));
    FBackOfficeSession.SetLoginPrompt(false);
    FBackOfficeQuery.CursorType = db::ReadMode::KeySet;
    SetSyncAction(saNone);
}

TSyncThread::~TSyncThread() {
    EndWork();
}

void TSyncThread::SetPOSConnectionString(const QString& value) {
    FPOSSession.SetConnectString(value);
    FPOSSession.SetConnectionTimeout(kConnectSeconds);
}

void TSyncThread::SetBackOfficeConnectionString(const QString& value) {
    const bool isFile = value.startsWith(kFileName, Qt::CaseInsensitive);
    FBackOfficeSession.SetConnectString(isFile ? db::ReadUdlFile(value.mid(kFileName.size())) : value);
    FBackOfficeSession.SetConnectionTimeout(kConnectSeconds);
    _backOfficeConnectionString = value;
}

void TSyncThread::SetSyncAction(TSyncAction value) {
    const Action& action = kActions[static_cast<size_t>(value)];
    _syncAction = value;
    Command = QString::fromUtf16(action.command);
    Params.Reset(action.parameter ? QStringList{QString::fromUtf16(action.parameter)} : QStringList());
}

void TSyncThread::Execute() {
    FException = nullptr;
    try {
        if (!FPOSSession.Connected()) FPOSSession.Open();
        FPOSQuery.SQL = {QStringLiteral("select in_avdnr,in_kassenr from innstillinger")};
        FPOSQuery.Open();
        const QString avdnr = FPOSQuery.FieldByName(QStringLiteral("in_avdnr")).AsString().trimmed();
        const QString kassenr = FPOSQuery.FieldByName(QStringLiteral("in_kassenr")).AsString().trimmed();
        FPOSQuery.Close();
        if (kActions[static_cast<size_t>(_syncAction)].parameter) putCommand(avdnr, kassenr);
    } catch (...) {
        FException = std::current_exception();
        handleException();
    }
}

// A department that the back office does not know puts no row there.
void TSyncThread::putCommand(const QString& avdnr, const QString& kassenr) {
    const QString parameter = QString::fromUtf16(kActions[static_cast<size_t>(_syncAction)].parameter);
    if (!FBackOfficeSession.Connected()) FBackOfficeSession.Open();
    FBackOfficeQuery.ParamCheck = false;
    FBackOfficeQuery.SQL = {
        QStringLiteral("INSERT INTO InternkundeKasseKommando "
                       "(Ikkk_Ikk_Ik_Ku_ID,Ikkk_Ikk_Kassenummer,Ikkk_Kommando,Ikkk_Id1)"),
        QStringLiteral("SELECT ik_ku_id,'%1','%2','%3' FROM internkunde WHERE ik_avdelingsnummer='%4'")
            .arg(quotesDoubled(kassenr), quotesDoubled(Command), quotesDoubled(Params.ByName(parameter).AsString()),
                 quotesDoubled(avdnr)),
    };
    FBackOfficeQuery.ExecSQL();
}

void TSyncThread::handleException() {
    try {
        std::rethrow_exception(FException);
    } catch (const EAbort&) {
        // nothing is shown for a silent abort
    } catch (const std::exception& error) {
        const QString text = ErrorText(error);
        if (ShowException) {
            Synchronize([this, text] { ShowException(text); });
        } else {
            ErrorList.append(text);
        }
    }
}

}  // namespace torvik
