// The status frame's operations on its two tables, and the views' order and filter.
#include "engine/status/oppgjor_status.h"

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
    memOppgjorStatus.Close();
    memLogEntries.Close();
    memOppgjorStatus.Open();
    memLogEntries.Open();
    SetCurrentRow(-1);
}

void TfraOppgjorStatus::SetCurrentRow(int row) {
    if (row == _currentRow) return;
    _currentRow = row;
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

OppgjorStatusMasterView::OppgjorStatusMasterView(TfraOppgjorStatus& frame, QObject* parent)
    : QSortFilterProxyModel(parent) {
    setSourceModel(&frame.memOppgjorStatus);
    sort(0);
}

bool OppgjorStatusMasterView::lessThan(const QModelIndex& left, const QModelIndex& right) const {
    const auto& table = static_cast<const OppgjorStatusTable&>(*sourceModel());
    const OppgjorStatusRow& a = table.Row(left.row());
    const OppgjorStatusRow& b = table.Row(right.row());
    if (a.AvdnrSort != b.AvdnrSort) return a.AvdnrSort > b.AvdnrSort;
    return a.Avdnr < b.Avdnr;
}

LogEntryDetailView::LogEntryDetailView(TfraOppgjorStatus& frame, QObject* parent)
    : QSortFilterProxyModel(parent), _entries(frame.memLogEntries) {
    setSourceModel(&_entries);
    connect(&_entries, &LogEntryTable::FilterChanged, this, [this] { invalidateFilter(); });
}

void LogEntryDetailView::SetTill(int Ik_Ku_Id, const QString& Kassenr) {
    _ikKuId = Ik_Ku_Id;
    _kassenr = Kassenr.trimmed();
    invalidateFilter();
}

bool LogEntryDetailView::filterAcceptsRow(int row, const QModelIndex&) const {
    const LogEntryRow& entry = _entries.Row(row);
    return entry.Ik_Ku_Id == _ikKuId && entry.Kassenr == _kassenr && _entries.Shows(row);
}

}  // namespace torvik
