#include "fleet/upgrade/upgrade_run.h"

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/statement_text.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/copy/torvik_pos_upgrade.h"
#include "fleet/objects/binary_object.h"
#include "fleet/objects/till_version.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

constexpr char kDeleteOlder[] = "delete binaryobject where Bo_Type IS NULL or Bo_Type='TORVIKPOS'";

constexpr char kUpgradeRows[] = R"(DELETE BINARYOBJECT WHERE BO_TYPE='TORVIKPOS' AND BO_DIRECTION=0
SELECT * FROM BINARYOBJECT WHERE BO_TYPE='TORVIKPOS' AND BO_DIRECTION=0)";

class UpgradeRun {
public:
    UpgradeRun(RunParts& parts, const QString& archive, const QString& folder, bool useSql, const CopyTools& tools)
        : parts_(parts), archive_(archive), folder_(folder), useSql_(useSql), upgrade_(parts, tools) {}

    void run();

private:
    void serve(const TillVisit& visit);
    void serveByDatabase(const TillVisit& visit) const;
    void serveByShare(const db::Query& till);

    RunParts& parts_;
    QString archive_;
    QString folder_;
    bool useSql_;
    TTorvikPOSUpgrade upgrade_;
};

void UpgradeRun::run() {
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.TestCancel = TillWalkPlan::CancelTest::Never;
    plan.Unreachable = [this](const TillIdentity& till) {
        parts_.Log.AddLog(
            QStringLiteral("Klarte ikke kople til %1 %2 ID %3 AvdID %4, Oppdateringen feilet.")
                .arg(till.Ku_Navn, till.Ku_Adresse1, QString::number(till.Ik_Ku_Id), till.Avdelingsnummer),
            true);
    };
    plan.Work = [this](TillVisit& visit) { serve(visit); };
    plan.Failed = [this](const TillIdentity&, const std::exception& failure) {
        parts_.Log.AddLog(ErrorText(failure), true);
    };
    TillWalk(parts_, plan).Run();
}

void UpgradeRun::serve(const TillVisit& visit) {
    if (tillVersionNumber(visit.DbVersion) >= kBinaryObjectVersion && useSql_) {
        serveByDatabase(visit);
    } else {
        serveByShare(visit.Roster.Qry());
    }
}

void UpgradeRun::serveByDatabase(const TillVisit& visit) const {
    EnsureBinaryObjectColumns(visit.TillSession);
    db::Query older(&visit.TillSession);
    older.SQL = QStringList{QString::fromUtf8(kDeleteOlder)};
    older.ExecSQL();
    writeBinaryObject(
        visit.TillSession, visit.Context.Seam,
        {.file = archive_, .type = QStringLiteral("TORVIKPOS"), .query = QString::fromUtf8(kUpgradeRows)});
}

void UpgradeRun::serveByShare(const db::Query& till) {
    upgrade_.NewVersionZipFile = archive_;
    upgrade_.TargetDirectory = folder_;
    upgrade_.Upgrade(QStringLiteral("\\\\%1\\%2").arg(till.text("Ikk_Server"), QStringLiteral("C$")),
                     till.text("Ikk_Brukernavn"), till.text("Ikk_Passord"));
}

}  // namespace

void UpgradeTorvikPOS(RunParts& parts, const QString& ANewVersionZipFile, const QString& TorvikPOSPath,
                      bool UseSqlIfPossible, const CopyTools& tools) {
    beginFleetWalk(parts);
    UpgradeRun(parts, ANewVersionZipFile, TorvikPOSPath, UseSqlIfPossible, tools).run();
}

}  // namespace torvik
