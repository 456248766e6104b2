#include "shell/results/script_results.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

#include "engine/db/query.h"
#include "shell/results/export.h"
#include "shell/results/grid.h"
#include "shell/results/sql_script_result.h"
#include "shell/results/table_model.h"

namespace torvik {

ScriptResults::ScriptResults(ExportTools tools, QWidget* parent)
    : QWidget(parent), tools_(std::move(tools)), pages_(new QTabWidget(this)) {
    auto* note =
        new QLabel(QStringLiteral("Denne fanen viser data etter at du har utført funksjonen 'Kjør SQL script'"), this);
    note->setWordWrap(true);
    pages_->setObjectName(QStringLiteral("scriptPages"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(note);
    layout->addWidget(pages_, 1);
}

void ScriptResults::clear() {
    SqlScriptCollection.clear();
    while (pages_->count() > 0) delete pages_->widget(0);
}

QWidget* ScriptResults::addPage(const QString& caption) {
    auto* page = new QWidget;
    pages_->addTab(page, caption);
    return page;
}

void ScriptResults::OnSqlScriptReturnData(db::Query& Data, db::Query& Roster) {
    auto* result = new TSqlScriptResult(addPage(
        QStringLiteral("Avd %1, kasse %2").arg(Roster.text("Ik_Avdelingsnummer"), Roster.text("Ikk_Kassenummer"))));
    SqlScriptCollection.push_back(result);
    result->LoadData(Data);
}

void ScriptResults::showSummary() {
    const std::vector<const TSqlScriptResult*> tills(SqlScriptCollection.begin(), SqlScriptCollection.end());
    QWidget* page = addPage(QStringLiteral("Oppsummering"));
    pages_->setCurrentWidget(page);
    auto* summary = new TSqlScriptResult(page);
    SqlScriptCollection.push_back(summary);
    giveMenu(*summary);
    if (!tills.empty()) summary->CopyDataFromSqlScriptResult(tills);
}

void ScriptResults::giveMenu(TSqlScriptResult& summary) {
    summary.FGrid->setContextMenuPolicy(Qt::ActionsContextMenu);
    const auto entry = [&](const char* name, const QString& caption) {
        auto* action = new QAction(caption, &summary);
        action->setObjectName(QString::fromUtf8(name));
        summary.FGrid->addAction(action);
        return action;
    };
    connect(entry("pmiOpenInExcel", QStringLiteral("Åpne i Excel")), &QAction::triggered, this,
            [this, &summary] { tools_.guarded([&] { openInExcel(summary); }); });
    connect(entry("pmiSaveAs", QStringLiteral("Lagre som...")), &QAction::triggered, this,
            [this, &summary] { tools_.guarded([&] { saveAsText(summary); }); });
    // There has never been anything behind it.
    entry("pmiLagreAlleSomExcel", QStringLiteral("Lagre alle som Excel ark..."))->setEnabled(pages_->count() > 1);
}

void ScriptResults::openInExcel(const TSqlScriptResult& summary) {
    const QString file = tools_.folder + QStringLiteral("sql.xls");
    const SpreadsheetNote note = writeSpreadsheet(*summary.FDataSource, file);
    if (const QString text = note.text(); !text.isEmpty()) tools_.tell(text);
    if (QFile::exists(file)) tools_.openFile(file);
}

void ScriptResults::saveAsText(const TSqlScriptResult& summary) {
    const QString file = tools_.askTextFile();
    if (!file.isEmpty()) writeText(*summary.FDataSource, file);
}

}  // namespace torvik
