#include "fleet/copy/send_file.h"

#include <QFileInfo>

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/run/run_parts.h"
#include "engine/run/till_walk.h"
#include "fleet/copy/torvik_pos_upgrade.h"
#include "fleet/walk/fleet_walk.h"

namespace torvik {

namespace {

constexpr double kBitsAByte = 8;
constexpr double kMega = 1000000;

// In 32 bits, whatever the file; -1 if there is none.
qint32 sizeOf(const QString& file) {
    const QFileInfo info(file);
    return info.exists() ? static_cast<qint32>(info.size()) : -1;
}

class FileSending {
public:
    FileSending(RunParts& parts, const FileToSend& file, const CopyTools& tools)
        : parts_(parts), file_(file), size_(sizeOf(file.AFileToCopy)), upgrade_(parts, tools) {}

    void run();

private:
    void showTills();
    void serve(const TillVisit& visit);

    RunParts& parts_;
    const FileToSend& file_;
    qint32 size_;
    TTorvikPOSUpgrade upgrade_;
};

void FileSending::run() {
    showTills();
    TillWalkPlan plan;
    plan.OfficeForLocksAlone = true;
    plan.LogsInAhead = true;
    plan.TestCancel = TillWalkPlan::CancelTest::Never;
    plan.Work = [this](TillVisit& visit) { serve(visit); };
    plan.Failed = [this](const TillIdentity& till, const std::exception& failure) {
        parts_.Log.AddLog(QStringLiteral("Feil ved kopiering til kasse %1 på avdeling %2 (%3)")
                              .arg(till.Kassenummer, till.Avdelingsnummer, ErrorText(failure)),
                          true);
    };
    TillWalk(parts_, plan).Run();
}

// A row for each till before the first is served, so that a speed has a place to go.
void FileSending::showTills() {
    if (!parts_.Status) return;
    parts_.Status->Clear();
    db::Query& tills = parts_.Roster.Qry();
    for (; !tills.Eof(); tills.Next()) {
        const TillIdentity till = TillIdentity::Of(tills);
        try {
            parts_.Status->SetStatus(till.Ik_Ku_Id, till.Avdelingsnummer, till.Ku_Adresse1, till.Kassenummer, ostHentet,
                                     oksNull, QString(), QTime(0, 0), -1);
        } catch (const std::exception& e) {
            // A department whose number is none: its till has no row, and is served all the same.
            parts_.Log.AddLog(ErrorText(e), true);
        }
    }
    tills.First();
}

void FileSending::serve(const TillVisit& visit) {
    const db::Query& till = visit.Roster.Qry();
    upgrade_.NewVersionZipFile = file_.AFileToCopy;
    upgrade_.TargetDirectory = file_.TorvikPOSPath;
    const qint64 before = parts_.Context.Seam.tickCount();
    upgrade_.SendFile(QStringLiteral("\\\\%1\\%2").arg(till.text("Ikk_Server"), file_.AResource),
                      till.text("Ikk_Brukernavn"), file_.DeleteAfterCopy, till.text("Ikk_Passord"));
    const double speed = uploadMbps(parts_.Context.Seam.tickCount() - before, size_);
    if (parts_.Status) parts_.Status->UpdateOpplastMbps(visit.Till.Avdelingsnummer, visit.Till.Kassenummer, speed);
}

}  // namespace

double uploadMbps(qint64 milliseconds, qint32 size) {
    const qint64 seconds = milliseconds / 1000;
    if (seconds == 0 || size == 0) return -1;
    return static_cast<double>(size) / static_cast<double>(seconds) / kMega * kBitsAByte;
}

void SendFile(RunParts& parts, const FileToSend& file, const CopyTools& tools) {
    beginFleetWalk(parts);
    FileSending(parts, file, tools).run();
}

}  // namespace torvik
