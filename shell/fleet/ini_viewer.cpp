#include "shell/fleet/ini_viewer.h"

#include <QFile>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include "shell/sheet/workbook.h"

namespace torvik {

namespace {

constexpr QSize kSize(1000, 640);

}  // namespace

TfrmTorvikPosIniViewerDlg::TfrmTorvikPosIniViewerDlg(QString folder, std::function<void(const QString&)> openFile,
                                                     QWidget* parent)
    : QDialog(parent),
      folder_(std::move(folder)),
      openFile_(std::move(openFile)),
      grid_(new QTableView(this)),
      whole_(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("TfrmTorvikPosIniViewerDlg"));
    setWindowTitle(QStringLiteral("TorvikPOS konfigurasjon"));
    resize(kSize);
    grid_->setObjectName(QStringLiteral("grid"));
    grid_->setModel(&memKasse_);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setTabKeyNavigation(false);  // Tab goes on to the next control
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::SingleSelection);
    grid_->verticalHeader()->hide();
    grid_->horizontalHeader()->setStretchLastSection(true);
    whole_->setObjectName(QStringLiteral("whole"));
    whole_->setReadOnly(true);
    whole_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* both = new QSplitter(Qt::Vertical, this);
    both->addWidget(grid_);
    both->addWidget(whole_);
    auto* toExcel = new QPushButton(QStringLiteral("Åpne i Excel"), this);
    toExcel->setObjectName(QStringLiteral("openInExcel"));
    toExcel->setAutoDefault(false);
    auto* close = new QPushButton(QStringLiteral("Lukk"), this);
    close->setObjectName(QStringLiteral("close"));
    close->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(toExcel);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(both);
    layout->addLayout(buttons);
    connect(grid_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { showWhole(current); });
    connect(toExcel, &QPushButton::clicked, this, [this] { exportToExcel(); });
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
}

void TfrmTorvikPosIniViewerDlg::Init() {
    memKasse_.clear();
    whole_->clear();
}

void TfrmTorvikPosIniViewerDlg::OnTorvikPosIni(const QString& AvdNr, const QString& Kassenr, const QStringList& Lines,
                                               const QString& Navn) {
    memKasse_.append(AvdNr, Kassenr, Navn, Lines);
    if (memKasse_.rowCount() == 1) grid_->selectRow(0);
    grid_->resizeColumnsToContents();
}

void TfrmTorvikPosIniViewerDlg::showWhole(const QModelIndex& current) {
    whole_->setPlainText(current.siblingAtColumn(IniTable::Ini).data(Qt::EditRole).toString());
}

void TfrmTorvikPosIniViewerDlg::exportToExcel() const {
    const QString file = folder_ + QStringLiteral("TorvikPOS konfigurasjon.xlsx");
    Workbook book(file);
    QStringList captions;
    for (int column = 0; column < IniTable::ColumnCount; ++column)
        captions << memKasse_.headerData(column, Qt::Horizontal).toString().replace(u'\n', QStringLiteral(": "));
    book.sheet("TorvikPOS konfigurasjon", captions);
    for (int row = 0; row < memKasse_.rowCount(); ++row) {
        book.nextRow();
        for (int column = 0; column < IniTable::ColumnCount; ++column) {
            const QVariant value = memKasse_.index(row, column).data(Qt::EditRole);
            if (value.typeId() == QMetaType::Bool) {
                book.boolean(column, value.toBool());
            } else {
                book.text(column, value.toString());
            }
        }
    }
    book.close();
    if (QFile::exists(file)) openFile_(file);
}

}  // namespace torvik
