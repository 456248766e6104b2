// One till of a demo chain with the data module on it, transactions open on both sides as a fetch arranges them, and
// the stage left as it was filled: what a transfer stages can be read.
#pragma once

#include <QStringList>

#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/transfer/dm_pos_to_torvik.h"
#include "tests/support/chain_run.h"

namespace torvik::test {

class TillTransfer {
public:
    explicit TillTransfer(int version = 213) : run({.departments = 1, .tills = 1, .days = 1, .versions = {version}}) {
        run.chain.runInBackOffice(
            "ALTER PROCEDURE DeleteFromTemp @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RETURN 0");
        dm.OnProgress = [this](QObject*, int, const QString& text) {
            progress << text;
            if (onProgress) onProgress(text);
        };
    }

    // Runs the transfer and commits both sides, or rolls both back and gives the failure's text.
    QString execute() {
        run.target.Open();
        run.engine.Avdeling->Open();
        run.engine.ApplySourceConnectionSettings();
        run.source.Open();
        run.source.StartTransaction();
        run.target.StartTransaction();
        dm.SetSourceConnection(&run.source);
        dm.SetDestinationConnection(&run.target);
        dm.Ik_Ku_ID = static_cast<int>(run.engine.Avdeling->Qry().FieldByName(QStringLiteral("Ik_Ku_Id")).AsInteger());
        dm.SetKasseNr(run.engine.Avdeling->Ikk_Kassenummer());
        try {
            dm.Execute();
            run.source.Commit();
            run.target.Commit();
            return {};
        } catch (const std::exception& e) {
            run.target.Rollback();
            run.source.Rollback();
            return QString::fromUtf8(e.what());
        }
    }

    [[nodiscard]] std::string staged(const std::string& sql) const { return run.backOfficeValue(sql); }
    void onTill(const std::string& batch) { run.chain.runInTill(0, batch); }
    // A department beside the till's own, without tills.
    void otherDepartment() {
        run.chain.runInBackOffice(
            "INSERT Internkunde (Ik_Ku_Id, Ik_Avdelingsnummer) SELECT 900, '900' WHERE NOT EXISTS "
            "(SELECT 1 FROM Internkunde WHERE Ik_Ku_Id = 900)");
    }

    ChainRun run;
    TdmPOStoTorvik dm;
    QStringList progress;
    std::function<void(const QString&)> onProgress;
};

}  // namespace torvik::test
