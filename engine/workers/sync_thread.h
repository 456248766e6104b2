// A worker that talks to one till and to the back office over sessions of its own: it puts a command about gift cards
// or credit notes into the back office's queue, InternkundeKasseKommando, for the till it is connected to.
#pragma once

#include <QString>
#include <exception>
#include <functional>

#include "engine/db/parameters.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/workers/torvik_pos_thread.h"

namespace torvik {

enum TSyncAction {
    saNone,
    saSendGavekortOgTilgodelapper,
    saHentGavekort,
    saHentTilgodelapp,
    saSendGavekort,
    saSendTilgodelapp
};

class TSyncThread : public TTorvikPosThread {
    Q_OBJECT

public:
    // folder: the application folder, with a separator at its end. Raises EngineError when it holds no "Torvik.UDL",
    // and db::UsageError when that cannot be read.
    TSyncThread(bool CreateSuspended, TThreadCollection& ThreadList, const QString& folder);
    ~TSyncThread() override;

    // All of these are set before the worker starts.
    [[nodiscard]] QString POSConnectionString() const { return FPOSSession.ConnectString(); }
    void SetPOSConnectionString(const QString& value);
    [[nodiscard]] QString BackOfficeConnectionString() const { return _backOfficeConnectionString; }
    // OLE DB text, or "FILE NAME=" and the path of a data-link file.
    void SetBackOfficeConnectionString(const QString& value);
    [[nodiscard]] db::Session& POSSession() { return FPOSSession; }

    [[nodiscard]] TSyncAction SyncAction() const { return _syncAction; }
    // Sets the Command and the parameters of the action.
    void SetSyncAction(TSyncAction value);
    QString Command;
    db::Parameters Params;

    // Shows the text of a failed worker's error, on the main thread; without it the text goes to ErrorList.
    std::function<void(const QString& text)> ShowException;
    // What Execute failed with, null if nothing; read once the worker has ended.
    [[nodiscard]] std::exception_ptr Exception() const { return FException; }

protected:
    void Execute() override;

private:
    void putCommand(const QString& avdnr, const QString& kassenr);
    void handleException();

    TSyncAction _syncAction = saNone;
    QString _backOfficeConnectionString;
    std::exception_ptr FException;
    db::Session FPOSSession;
    db::Session FBackOfficeSession;
    db::Query FPOSQuery{&FPOSSession};
    db::Query FBackOfficeQuery{&FBackOfficeSession};
};

}  // namespace torvik
