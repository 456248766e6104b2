// The back office's session as the engine uses it: its general query, and the small questions that runs ask. What it
// cannot answer is an exception of engine/db. One walk has one.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>

#include "engine/base/engine_context.h"
#include "engine/db/table_shapes.h"

namespace torvik {

namespace db {
class Query;
class Session;
}  // namespace db

class BackOffice {
public:
    explicit BackOffice(const EngineContext& context);
    ~BackOffice();

    // Not owned. The general query follows it.
    [[nodiscard]] db::Session* Connection() const { return FTargeTMSConnection; }
    void SetConnection(db::Session* value);
    // The same; raises EngineError when there is none.
    [[nodiscard]] db::Session& Session() const;
    // Opens the session if it is closed and binds the general query to it: how every run begins.
    void Begin();
    // Of the staging tables, within one run.
    db::TableShapes StagingShapes;

    // The general query; whoever uses it closes it.
    [[nodiscard]] db::Query& GeneralQuery() const { return *FqryGeneralTarget; }
    // The same, closed, with this text.
    [[nodiscard]] db::Query& GeneralQuery(const QStringList& sql);

    [[nodiscard]] QString ServerFragment() const;  // "Data Source=..." and so on: connection string fragments
    [[nodiscard]] QString CatalogFragment() const;
    [[nodiscard]] QString UserFragment() const;
    [[nodiscard]] QString PasswordFragment() const;
    [[nodiscard]] double DBVersion();  // in_dbversjon, read once
    [[nodiscard]] QString ServerAndDatabaseName();
    // The next number of a series of the back office; 0 when it has none to give.
    [[nodiscard]] int GetTargetId(const QString& AName);
    // Whether the department's credit sales become orders at the back office.
    [[nodiscard]] bool IsFakturaVedBackOffice(const QString& department);

private:
    EngineContext context_;
    db::Session* FTargeTMSConnection = nullptr;
    std::unique_ptr<db::Query> FqryGeneralTarget;
    std::unique_ptr<db::Query> FqryIdTarget;
    double fTargetDBVersion = -1.0;  // -1.0: not read yet
};

}  // namespace torvik
