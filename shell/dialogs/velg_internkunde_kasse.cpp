// The condition on the tills' version is written behind the line after WHERE, in the text that is sent.
#include "shell/dialogs/velg_internkunde_kasse.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <array>

#include "engine/db/query.h"
#include "shell/dialogs/ok_avbryt.h"

namespace torvik {

namespace {

constexpr const char* kTills[] = {
    "SELECT",
    "  ku_id,",
    "  ku_navn,",
    "  ku_adresse1,",
    "  ik_avdelingsnummer,",
    "  ikk_kassenummer,",
    "  rtrim(ik_avdelingsnummer) + rtrim(ikk_kassenummer) PK,",
    "  Ikk_SynkVersjon",
    "FROM",
    "  kunde",
    "JOIN",
    "  internkunde on (ku_id=ik_ku_id)",
    "JOIN",
    "  internkundekasse on ( ikk_ik_ku_id=ik_ku_id)",
    "WHERE",
    "  ikk_aktiv=1",
    "ORDER BY",
    "  ik_avdelingsnummer,ikk_kassenummer",
};

constexpr char kTillsOfOffer[] =
    "select Ptl_Ikk_Ik_Ku_ID,ptl_ikk_kassenummer from pristilbudlogg where Ptl_Pl_Pr_ID =:prid";

constexpr char kOldOnly[] = " and ( Ikk_SynkVersjon is null or Ikk_SynkVersjon = 0 )";
constexpr int kWidestColumn = 260;
constexpr char kNewOnly[] = " and Ikk_SynkVersjon = 1";

struct GridColumn {
    const char* field;
    const char* caption;
};
constexpr std::array<GridColumn, 5> kColumns{{
    {"ku_id", "Kundenr"},
    {"ku_navn", "Navn"},
    {"ku_adresse1", "Adresse"},
    {"ik_avdelingsnummer", "Avdeling"},
    {"ikk_kassenummer", "Kassenr"},
}};

QStringList tillsSql(const TSyncVersions& versions) {
    QStringList sql;
    for (const char* line : kTills) sql << QString::fromUtf8(line);
    QString& condition = sql[sql.indexOf(QStringLiteral("WHERE")) + 1];
    const bool oldOnes = versions.contains(svTorvikPosSync);
    const bool newOnes = versions.contains(svDotNetV1);
    if (oldOnes && !newOnes) condition += QString::fromUtf8(kOldOnly);
    if (newOnes && !oldOnes) condition += QString::fromUtf8(kNewOnly);
    return sql;
}

}  // namespace

TfrmVelgInternkundeKasse::TfrmVelgInternkundeKasse(db::Session& session, QWidget* parent)
    : QDialog(parent),
      session_(session),
      grid_(new QTableWidget(this)),
      prompt_(new QLabel(this)),
      count_(new QLabel(this)) {
    setObjectName(QStringLiteral("TfrmVelgInternkundeKasse"));
    setWindowTitle(QStringLiteral("Velg kasser"));
    grid_->setObjectName(QStringLiteral("tills"));
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setTabKeyNavigation(false);  // Tab goes on to the next control
    grid_->setAlternatingRowColors(true);
    grid_->verticalHeader()->hide();
    QStringList captions;
    for (const GridColumn& column : kColumns) captions << QString::fromUtf8(column.caption);
    grid_->setColumnCount(static_cast<int>(kColumns.size()));
    grid_->setHorizontalHeaderLabels(captions);
    grid_->verticalHeader()->setDefaultSectionSize(grid_->fontMetrics().height() + 8);
    grid_->horizontalHeader()->setStretchLastSection(true);
    grid_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    grid_->horizontalHeader()->setHighlightSections(false);
    prompt_->setWordWrap(true);
    SetMultiSelect(true);

    auto* buttons = okAndAvbryt(*this);
    ok_ = buttons->findChild<QPushButton*>(QStringLiteral("ok"));
    auto* all = buttons->addButton(QStringLiteral("Velg alle"), QDialogButtonBox::ActionRole);
    all->setObjectName(QStringLiteral("all"));
    count_->setObjectName(QStringLiteral("count"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt_);
    layout->addWidget(grid_);
    layout->addWidget(count_);
    layout->addWidget(buttons);
    resize(720, 480);

    connect(all, &QPushButton::clicked, grid_, &QTableWidget::selectAll);
    connect(grid_, &QTableWidget::itemSelectionChanged, this, &TfrmVelgInternkundeKasse::showCount);
    showCount();
}

void TfrmVelgInternkundeKasse::SetMultiSelect(bool on) {
    grid_->setSelectionMode(on ? QAbstractItemView::ExtendedSelection : QAbstractItemView::SingleSelection);
    // The letters of the first prompt are what the operators have always seen.
    prompt_->setText(on ? QStringLiteral("Velg de kassene som skal behandles. Bruk Ctrl og Shift for Ã¥ markere flere")
                        : QStringLiteral("Velg den kassen som skal behandles."));
}

bool TfrmVelgInternkundeKasse::Execute(TKasseCollection& KasseCollection) {
    KasseCollection.Clear();
    load();
    return ask(KasseCollection);
}

bool TfrmVelgInternkundeKasse::Execute(TKasseCollection& KasseCollection, int pristilbudId) {
    KasseCollection.Clear();
    load();
    selectTillsOf(pristilbudId);
    return ask(KasseCollection);
}

bool TfrmVelgInternkundeKasse::ask(TKasseCollection& KasseCollection) {
    grid_->setFocus();
    if (exec() != QDialog::Accepted) return false;
    const auto text = [this](int row, int column) { return grid_->item(row, column)->text(); };
    for (const int row : selectedRows()) {
        TKasseItem& item = KasseCollection.Add();
        item.Ik_Ku_ID = text(row, 0).toInt();
        item.AvdNavn = text(row, 2);
        item.Avdnr = text(row, 3);
        item.Kassenr = text(row, 4);
    }
    return true;
}

void TfrmVelgInternkundeKasse::load() {
    db::Query query(&session_);
    query.ParamCheck = false;
    query.SQL = tillsSql(fSyncVersions);
    query.Open();
    grid_->setRowCount(query.RecordCount());
    for (int row = 0; !query.Eof(); query.Next(), ++row)
        for (std::size_t column = 0; column < kColumns.size(); ++column)
            grid_->setItem(
                row, static_cast<int>(column),
                new QTableWidgetItem(query.FieldByName(QString::fromUtf8(kColumns[column].field)).AsString()));
    grid_->horizontalHeader()->setMaximumSectionSize(kWidestColumn);  // a long name pushes no column out
    grid_->resizeColumnsToContents();
    grid_->clearSelection();
    showCount();
}

void TfrmVelgInternkundeKasse::selectTillsOf(int pristilbudId) {
    db::Query sent(&session_);
    sent.SQL = QStringList{QString::fromUtf8(kTillsOfOffer)};
    sent.ParamByName(QStringLiteral("prid")).SetValue(pristilbudId);
    sent.Open();
    QItemSelection chosen;
    for (int row = 0; row < grid_->rowCount(); ++row) {
        const QList<db::Value> till{grid_->item(row, 0)->text().toInt(), grid_->item(row, 4)->text()};
        if (sent.Locate(QStringLiteral("Ptl_Ikk_Ik_Ku_ID;Ptl_Ikk_Kassenummer"), till))
            chosen.select(grid_->model()->index(row, 0), grid_->model()->index(row, grid_->columnCount() - 1));
    }
    grid_->selectionModel()->select(chosen, QItemSelectionModel::ClearAndSelect);
}

QList<int> TfrmVelgInternkundeKasse::selectedRows() const {
    QList<int> rows;
    for (const QModelIndex& index : grid_->selectionModel()->selectedRows()) rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void TfrmVelgInternkundeKasse::showCount() {
    const auto selected = selectedRows().size();
    count_->setText(QStringLiteral("%1 valgt").arg(selected));
    ok_->setEnabled(selected > 0);
    ok_->setToolTip(selected > 0 ? QString() : QStringLiteral("Velg minst én kasse"));
}

}  // namespace torvik
