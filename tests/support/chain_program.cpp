// See chain_program.h.
#include "tests/support/chain_program.h"

#include <QDir>

#include "engine/roster/avdeling.h"
#include "inbound/fetch_till.h"

namespace torvik::test {

namespace {

QStringList withoutTimes(const QStringList& pane) {
    QStringList texts;
    for (const QString& line : pane) texts << line.section(QStringLiteral("  : "), 1);
    return texts;
}

}  // namespace

ChainProgram::ChainProgram(const std::string& dataLink, const QString& noteFolder)
    : workingDirectory_(QDir::currentPath()) {
    QDir::setCurrent(folder.path());
    engine.Seam.tempFolder = [this] { return folder.path(); };
    engine.Seam.sleep = [](int) {};
    engine.RetryWaitTime = 0;
    engine.RetryCount = 1;
    engine.IsEnterprise = true;
    engine.Log = &logPane;
    engine.ErrorLog = &errorPane;
    engine.SourceConnection = &source;
    target.SetConnectString(QString::fromStdString(dataLink));
    engine.SetTargetConnection(&target);
    joinPoints.NoteFolder = noteFolder.isEmpty() ? folder.filePath(QStringLiteral("Notater")) : noteFolder;
    joinFetching(engine, joinPoints);
}

ChainProgram::~ChainProgram() {
    QDir::setCurrent(workingDirectory_);
}

void ChainProgram::fetch() {
    engine.Tasks = TTasks{taHent};
    target.Close();
    target.Open();
    engine.Avdeling->ClearFilter();
    engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    engine.ExecuteOppgjor();
}

QStringList ChainProgram::errors() const {
    return withoutTimes(errorPane.Lines());
}

QStringList ChainProgram::log() const {
    return withoutTimes(logPane.Lines());
}

}  // namespace torvik::test
