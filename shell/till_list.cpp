// A plain query into a plain table model; the search is a filter over all columns.
#include "shell/till_list.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

#include "engine/db/query.h"

namespace torvik {

namespace {

constexpr int kRowsAtLeast = 5;  // with the header

constexpr char kTills[] =
    R"(SELECT rtrim(Ik_Avdelingsnummer) Avdeling, rtrim(Ikk_Kassenummer) Kasse, Ku_Adresse1 Butikk, Ikk_Server Server
FROM Kunde
JOIN Internkunde ON Ik_Ku_Id = Ku_Id
JOIN Internkundekasse ON Ikk_Ik_Ku_Id = Ik_Ku_Id
JOIN KasseType ON Kt_Id = Ikk_Kt_Id
WHERE Ikk_Aktiv = 1 AND Kt_Navn LIKE '%TorvikPOS%'
ORDER BY Ik_Avdelingsnummer, Ikk_Kassenummer)";

}  // namespace

// The search is made first: Tab comes to it first.
TillList::TillList(QWidget* parent) : QWidget(parent), model_(new QStandardItemModel(this)) {
    auto* filter = new QSortFilterProxyModel(this);
    filter->setSourceModel(model_);
    filter->setFilterKeyColumn(-1);
    filter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    auto* search = new QLineEdit(this);
    search->setPlaceholderText(QStringLiteral("Søk etter avdeling, kasse eller butikk"));
    search->setClearButtonEnabled(true);
    search->setObjectName(QStringLiteral("tillSearch"));
    view_ = new QTableView(this);
    view_->setObjectName(QStringLiteral("tillList"));
    view_->setModel(filter);
    view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view_->setSelectionBehavior(QAbstractItemView::SelectRows);
    view_->setAlternatingRowColors(true);
    view_->setTabKeyNavigation(false);  // Tab goes on to the next control
    view_->verticalHeader()->hide();
    view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 8);
    view_->setMinimumHeight(kRowsAtLeast * view_->verticalHeader()->defaultSectionSize());
    view_->horizontalHeader()->setStretchLastSection(true);
    view_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    view_->horizontalHeader()->setHighlightSections(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search);
    layout->addWidget(view_);
    connect(search, &QLineEdit::textChanged, filter, &QSortFilterProxyModel::setFilterFixedString);
}

void TillList::load(db::Session& session) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.SQL = QString::fromUtf8(kTills).split(QLatin1Char('\n'));
    query.Open();
    model_->clear();
    model_->setHorizontalHeaderLabels(query.FieldNames());
    for (; !query.Eof(); query.Next()) {
        QList<QStandardItem*> cells;
        for (int column = 0; column < query.FieldCount(); ++column)
            cells << new QStandardItem(query.Fields(column).AsString());
        model_->appendRow(cells);
    }
    view_->resizeColumnsToContents();
}

}  // namespace torvik
