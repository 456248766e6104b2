#include "shell/results/health_view.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QVBoxLayout>

#include "fleet/health/health_status.h"
#include "shell/look/colors.h"
#include "shell/results/export.h"
#include "shell/results/grid.h"
#include "shell/results/table_model.h"

namespace torvik {

namespace {

constexpr int kOldBackup = 2;      // days from which a backup is shown as old: a night was missed
constexpr int kVeryOldBackup = 8;  // and from which as very old: a week was
constexpr int kMostDays = 5001;    // from which a count of days says nothing
constexpr double kFirstDate = 10;  // days from 30.12.1899, below which a date says that there is no backup

// As values, not as texts; where those are alike, by the rows' own order.
class SortedModel : public QSortFilterProxyModel {
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    [[nodiscard]] bool lessThan(const QModelIndex& left, const QModelIndex& right) const override {
        const auto a = left.data(TableModel::ValueRole).value<db::Value>();
        const auto b = right.data(TableModel::ValueRole).value<db::Value>();
        if (a.isNull() || b.isNull()) return a.isNull() && !b.isNull();
        if (std::holds_alternative<qint64>(a.variant())) return a.toInt() < b.toInt();
        if (std::holds_alternative<db::DateTime>(a.variant())) return a.toDateTime() < b.toDateTime();
        // Numbers of departments and tills are texts of digits.
        bool aNumber = false;
        bool bNumber = false;
        const int i = a.toQString().toInt(&aNumber);
        const int j = b.toQString().toInt(&bNumber);
        if (aNumber && bNumber) return i < j;
        return QString::localeAwareCompare(a.toQString(), b.toQString()) < 0;
    }
};

// A row of a database has the colour of its backup's age, whichever way it is sorted.
class BackupModel : public TableModel {
public:
    using TableModel::TableModel;

    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        return caption(*this, section, orientation, role);
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::ForegroundRole || !index.isValid()) return TableModel::data(index, role);
        const db::MemTable& rows = *tables().front();
        const bool never = value(index.row(), rows.FieldByName(QStringLiteral("LastBackupDate")).Index()).isNull();
        const qint64 days = value(index.row(), rows.FieldByName(QStringLiteral("DaysSinceLastBackup")).Index()).toInt();
        if (never || days >= kVeryOldBackup) return textColor(Tone::Red);
        if (days >= kOldBackup) return textColor(Tone::Blue);
        return {};
    }

    [[nodiscard]] static QVariant caption(const TableModel& model, int section, Qt::Orientation orientation, int role) {
        const QVariant name = model.TableModel::headerData(section, orientation, role);
        if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return name;
        static const QHash<QString, QString> captions{
            {QStringLiteral("AvdNr"), QStringLiteral("Avdeling")},
            {QStringLiteral("AvdNavn"), QStringLiteral("Navn")},
            {QStringLiteral("Kassenr"), QStringLiteral("Kassenr")},
            {QStringLiteral("DatabaseName"), QStringLiteral("Database")},
            {QStringLiteral("LastBackupDate"), QStringLiteral("Siste backup")},
            {QStringLiteral("DaysSinceLastBackup"), QStringLiteral("Dager siden backup")},
            {QStringLiteral("JobName"), QStringLiteral("Jobb som feilet")},
        };
        return captions.value(name.toString(), name.toString());
    }
};

class JobModel : public TableModel {
public:
    using TableModel::TableModel;

    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        return BackupModel::caption(*this, section, orientation, role);
    }
};

std::shared_ptr<db::MemTable> backupTable() {
    auto table = std::make_shared<db::MemTable>();
    table->AddColumn(QStringLiteral("AvdNr"), db::FieldType::Text);
    table->AddColumn(QStringLiteral("AvdNavn"), db::FieldType::Text);
    table->AddColumn(QStringLiteral("Kassenr"), db::FieldType::Text);
    table->AddColumn(QStringLiteral("DatabaseName"), db::FieldType::Text);
    table->AddColumn(QStringLiteral("LastBackupDate"), db::FieldType::DateTime);
    table->AddColumn(QStringLiteral("DaysSinceLastBackup"), db::FieldType::Integer);
    table->Open();
    return table;
}

std::shared_ptr<db::MemTable> jobTable() {
    auto table = std::make_shared<db::MemTable>();
    for (const char* column : {"AvdNr", "AvdNavn", "Kassenr", "JobName"})
        table->AddColumn(QString::fromUtf8(column), db::FieldType::Text);
    table->Open();
    return table;
}

bool saysNever(const db::DateTime& date) {
    return QDate(1899, 12, 30).daysTo(date.date()) < kFirstDate;
}

// The number of days is tested by the column of the row that was just begun, which holds nothing yet: so the great
// number of a database without a backup is shown as it is.
void appendBackup(db::MemTable& rows, const TLastBackupDate& backup) {
    rows.Append();
    rows.FieldByName(QStringLiteral("DatabaseName")) = backup.DatabaseName;
    db::Field& date = rows.FieldByName(QStringLiteral("LastBackupDate"));
    if (saysNever(backup.LastBackupDate)) {
        date.Clear();
    } else {
        date = backup.LastBackupDate;
    }
    db::Field& days = rows.FieldByName(QStringLiteral("DaysSinceLastBackup"));
    if (days.AsInteger() < kMostDays) {
        days = backup.DaysSinceLastBackup;
    } else {
        days.Clear();
    }
    rows.FieldByName(QStringLiteral("AvdNr")) = backup.AvdNr;
    rows.FieldByName(QStringLiteral("AvdNavn")) = backup.AvdNavn;
    rows.FieldByName(QStringLiteral("Kassenr")) = backup.Kassenr;
    rows.Post();
}

void appendJob(db::MemTable& rows, const TFailedJob& job) {
    rows.Append();
    rows.FieldByName(QStringLiteral("JobName")) = job.JobName;
    rows.FieldByName(QStringLiteral("AvdNr")) = job.AvdNr;
    rows.FieldByName(QStringLiteral("AvdNavn")) = job.AvdNavn;
    rows.FieldByName(QStringLiteral("Kassenr")) = job.Kassenr;
    rows.Post();
}

QWidget* titled(const QString& title, QWidget* content) {
    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(new QLabel(title, panel));
    layout->addWidget(content, 1);
    return panel;
}

}  // namespace

HealthView::HealthView(HealthTools tools, QWidget* parent)
    : QWidget(parent),
      memLastBackupDates(backupTable()),
      memFailedJobs(jobTable()),
      tools_(std::move(tools)),
      backups_(new BackupModel(this)),
      jobs_(new JobModel(this)),
      backupGrid_(list("lastBackupDates", *backups_)),
      jobGrid_(list("failedJobs", *jobs_)) {
    backups_->setTables({memLastBackupDates});
    jobs_->setTables({memFailedJobs});
    auto* both = new QSplitter(Qt::Vertical, this);
    both->addWidget(titled(QStringLiteral("Siste backup"), backupGrid_));
    both->addWidget(titled(QStringLiteral("Jobber som feilet"), jobGrid_));
    both->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(both);
}

Grid* HealthView::list(const char* name, TableModel& model) {
    auto* grid = new Grid(this);
    grid->setObjectName(QString::fromUtf8(name));
    auto* sorted = new SortedModel(grid);
    sorted->setSourceModel(&model);
    grid->setModel(sorted);
    grid->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    grid->horizontalHeader()->setSortIndicatorClearable(true);
    grid->setSortingEnabled(true);
    grid->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* take = new QAction(QStringLiteral("Kopier"), grid);
    take->setObjectName(QStringLiteral("copyRows"));
    connect(take, &QAction::triggered, grid, &Grid::copy);
    auto* save = new QAction(QStringLiteral("Eksporter til regneark..."), grid);
    save->setObjectName(QStringLiteral("exportList"));
    connect(save, &QAction::triggered, this, [this, grid] { tools_.guarded([&] { exportList(*grid); }); });
    grid->addActions({take, save});
    return grid;
}

void HealthView::showHealth(const THealthSummary& summary) {
    memLastBackupDates->Clear();
    memFailedJobs->Clear();
    for (const TLastBackupDate& backup : summary.LastBackupDates.Items) appendBackup(*memLastBackupDates, backup);
    for (const TFailedJob& job : summary.FailedJobs.Items) appendJob(*memFailedJobs, job);
    backups_->setTables({memLastBackupDates});
    jobs_->setTables({memFailedJobs});
    backupGrid_->fitColumns();
    jobGrid_->fitColumns();
}

void HealthView::exportList(const Grid& grid) {
    const QString file = tools_.askSpreadsheet();
    if (file.isEmpty()) return;
    const SpreadsheetNote note = writeSpreadsheet(*grid.model(), file);
    if (const QString text = note.text(); !text.isEmpty()) tools_.tell(text);
}

}  // namespace torvik
