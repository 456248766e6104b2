// The status frame's operations on its two tables.
#include "engine/status/oppgjor_status.h"

#include <utility>

#include "engine/base/abort.h"

namespace torvik {

namespace {

int departmentNumber(const QString& avdnr) {
    bool isNumber = false;
    const int number = avdnr.trimmed().toInt(&isNumber);
    if (!isNumber) throw EngineError(QStringLiteral("Avdelingsnummer \"%1\" er ikke et tall").arg(avdnr));
    return number;
}

std::optional<bool> asColumn(TOKStatus ok) {
    if (ok == oksNull) return std::nullopt;
    return ok == oksTrue;
}

}  // namespace

TfraOppgjorStatus::TfraOppgjorStatus(QObject* owner) : QObject(owner) {}

QString TfraOppgjorStatus::NoDataText() {
    return QStringLiteral("<Ikke noe data å vise>");
}
QString TfraOppgjorStatus::ErrorsOnlyCaption() {
    return QStringLiteral("Vis kun feil detaljer");
}
QString TfraOppgjorStatus::ViewOptionsCaption() {
    return QStringLiteral("Visningsalternativer");
}
QString TfraOppgjorStatus::ExpandAllCaption() {
    return QStringLiteral("Utvid alle");
}
QString TfraOppgjorStatus::CollapseAllCaption() {
    return QStringLiteral("Trekk sammen alle");
}

void TfraOppgjorStatus::Clear() {
    failures_.clear();
    memOppgjorStatus.Close();
    memLogEntries.Close();
    memOppgjorStatus.Open();
    memLogEntries.Open();
    SetCurrentRow(-1);
    setRunningRow(-1);
}

void TfraOppgjorStatus::BeginTill(const QString& AvdNr, const QString& KasseNr) {
    setRunningRow(memOppgjorStatus.Locate(AvdNr, KasseNr));
}

void TfraOppgjorStatus::EndTill() {
    setRunningRow(-1);
}

void TfraOppgjorStatus::setRunningRow(int row) {
    if (row == runningRow_) return;
    const int before = std::exchange(runningRow_, row);
    Q_EMIT RunningRowChanged(before, row);
}

void TfraOppgjorStatus::SetCurrentRow(int row) {
    if (row == currentRow_) return;
    currentRow_ = row;
    Q_EMIT CurrentRowChanged(row);
}

void TfraOppgjorStatus::SetStatus(int Ik_Ku_Id, const QString& AvdNr, const QString& AvdNavn, const QString& KasseNr,
                                  TOppgjorStatusType OppgjorStatusType, TOKStatus OK, const QString& AppendMsg,
                                  QTime TidBrukt, int NumDaysSinceLastBackup) {
    memOppgjorStatus.Open();
    const int found = memOppgjorStatus.Locate(AvdNr, KasseNr);
    OppgjorStatusRow row = found < 0 ? OppgjorStatusRow{} : memOppgjorStatus.Row(found);

    row.Avdnr = AvdNr;
    row.AvdnrSort = departmentNumber(AvdNr);
    row.Ik_Ku_Id = Ik_Ku_Id;
    row.AvdNavn = AvdNavn;
    row.Kassenr = KasseNr;
    if (NumDaysSinceLastBackup >= 0) row.DagerSidenBackup = NumDaysSinceLastBackup;
    switch (OppgjorStatusType) {
        case ostDoNotSet: break;
        case ostHentet: row.Hentet = asColumn(OK); break;
        case ostSendt: row.Sendt = asColumn(OK); break;
        case ostHentetNull: row.Hentet.reset(); break;
    }
    if (!AppendMsg.trimmed().isEmpty()) row.Melding = row.Melding.trimmed() + AppendMsg + u',';
    row.TidBrukt = TidBrukt.isValid() ? std::optional(TidBrukt) : std::nullopt;

    const int number = post(found, std::move(row));
    Q_EMIT RowExpanded(number);
}

void TfraOppgjorStatus::UpdateStatus(int Ik_Ku_Id, const QString& AvdNr, const QString& AvdNavn, const QString& KasseNr,
                                     const TOppgjorStatus& Status) {
    memOppgjorStatus.Open();
    const int found = memOppgjorStatus.Locate(AvdNr, KasseNr);
    OppgjorStatusRow row;
    if (found >= 0) {
        row = memOppgjorStatus.Row(found);
    } else {
        row.Ik_Ku_Id = Ik_Ku_Id;
        row.Avdnr = AvdNr;
        row.AvdnrSort = departmentNumber(AvdNr);
        row.AvdNavn = AvdNavn;
        row.Kassenr = KasseNr;
    }
    row.Sendt = Status.contains(ostSendt);
    row.Hentet = Status.contains(ostHentet);
    post(found, std::move(row));
}

void TfraOppgjorStatus::UpdateSisteOppgjor(const QString& AvdNr, const QString& KasseNr, const db::DateTime& Value) {
    change(AvdNr, KasseNr, [&](OppgjorStatusRow& row) { row.SisteOppgjor = Value; });
}

void TfraOppgjorStatus::UpdateOpplastMbps(const QString& AvdNr, const QString& KasseNr, double Value) {
    change(AvdNr, KasseNr, [&](OppgjorStatusRow& row) { row.Opplast_mbps = Value; });
}

void TfraOppgjorStatus::UpdateNonReconsiledSales(const QString& AvdNr, const QString& KasseNr, int Antall) {
    change(AvdNr, KasseNr, [&](OppgjorStatusRow& row) { row.AntSalgIkkeOppgjort = Antall; });
}

void TfraOppgjorStatus::AddFailure(const QString& AvdNr, const QString& KasseNr, const TillFailure& failure) {
    const int row = memOppgjorStatus.Locate(AvdNr, KasseNr);
    if (row >= 0) failures_[row].push_back(failure);
}

const std::vector<TillFailure>& TfraOppgjorStatus::Failures(int row) const {
    static const std::vector<TillFailure> none;
    const auto found = failures_.find(row);
    return found == failures_.end() ? none : found->second;
}

int TfraOppgjorStatus::post(int found, OppgjorStatusRow row) {
    int number = found;
    if (found < 0) {
        number = memOppgjorStatus.Append(std::move(row));
    } else {
        memOppgjorStatus.Post(found, std::move(row));
    }
    SetCurrentRow(number);
    return number;
}

template <typename Change>
void TfraOppgjorStatus::change(const QString& AvdNr, const QString& KasseNr, Change set) {
    memOppgjorStatus.Open();
    const int found = memOppgjorStatus.Locate(AvdNr, KasseNr);
    if (found < 0) return;
    OppgjorStatusRow row = memOppgjorStatus.Row(found);
    set(row);
    post(found, std::move(row));
}

}  // namespace torvik
