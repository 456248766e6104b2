#include <memory>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/ini/ini_runs.h"
#include "fleet/objects/binary_object.h"
#include "fleet/objects/till_version.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

constexpr char kDeleteOlder[] = "delete binaryobject where Bo_Type IS NULL or Bo_Type='TORVIKPOS_CHANGE.INI'";
constexpr char kChangeRows[] = "SELECT * FROM BinaryObject WHERE Bo_Type='TORVIKPOS_CHANGE.INI'";

void sendChanges(const TillVisit& visit, const QString& file) {
    EnsureBinaryObjectColumns(visit.TillSession);
    db::Query older(&visit.TillSession);
    older.SQL = QStringList{QString::fromUtf8(kDeleteOlder)};
    older.ExecSQL();
    writeBinaryObject(
        visit.TillSession, visit.Context.Seam,
        {.file = file, .type = QStringLiteral("TORVIKPOS_CHANGE.INI"), .query = QString::fromUtf8(kChangeRows)});
    visit.Log.AddLog(QStringLiteral("Endringer i %1 sendt til %2 - %3")
                         .arg(file, visit.Till.Avdelingsnummer, visit.Till.Ku_Adresse1));
}

TillWalkPlan planOf(RunParts& parts, const QString& file) {
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.TestCancel = TillWalkPlan::CancelTest::Never;
    plan.Unreachable = [&parts](const TillIdentity& till) {
        parts.Log.AddLog(QStringLiteral("Klarte ikke kople til %1 %2 ID %3 AvdID %4, Oppdateringen feilet.")
                             .arg(till.Ku_Navn, till.Ku_Adresse1, QString::number(till.Ik_Ku_Id), till.Avdelingsnummer),
                         true);
    };
    const auto tooOld = std::make_shared<bool>(false);
    plan.Work = [file, tooOld](TillVisit& visit) {
        *tooOld = tillVersionNumber(visit.DbVersion) < kBinaryObjectVersion;
        if (!*tooOld) sendChanges(visit, file);
    };
    plan.Ends = [tooOld] { return *tooOld; };
    plan.Failed = [&parts](const TillIdentity&, const std::exception& failure) {
        parts.Log.AddLog(ErrorText(failure), true);
    };
    return plan;
}

}  // namespace

void UpgradeTorvikPOSini(RunParts& parts, const QString& ANewVersionIniFile) {
    beginFleetWalk(parts);
    TillWalk(parts, planOf(parts, ANewVersionIniFile)).Run();
}

}  // namespace torvik
