#include "shell/results/sql_script_result.h"

#include <QHeaderView>
#include <QRandomGenerator>
#include <QVBoxLayout>

#include "shell/results/grid.h"
#include "shell/results/table_model.h"

namespace torvik {

namespace {

constexpr int kNames = 1000;

}  // namespace

TSqlScriptResult::TSqlScriptResult(QWidget* page)
    : QObject(page),
      FGrid(new Grid(page)),
      FMemData(std::make_shared<db::MemTable>()),
      FDataSource(new TableModel(this)) {
    const int number = QRandomGenerator::global()->bounded(kNames);
    FGrid->setObjectName(QStringLiteral("view%1").arg(number));
    FGrid->horizontalHeader()->setObjectName(QStringLiteral("lvl%1").arg(number));
    FGrid->setModel(FDataSource);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(FGrid);
}

void TSqlScriptResult::LoadData(const db::DataSet& Data) {
    if (!Data.Active()) return;
    FMemData->CopyFrom(Data);
    FDataSource->setTables({FMemData});
    FGrid->fitColumns();
}

void TSqlScriptResult::CopyDataFromSqlScriptResult(const std::vector<const TSqlScriptResult*>& Sources) {
    std::vector<TableModel::Table> tables;
    for (const TSqlScriptResult* source : Sources) tables.push_back(source->FMemData);
    FDataSource->setTables(std::move(tables));
    FGrid->fitColumns();
}

}  // namespace torvik
