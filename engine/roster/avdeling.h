// The till roster: one query on the back office whose rows are tills. The current row is the till being served; the
// log, the connection to the till and the walk read it. One walk has one.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>

#include "engine/base/engine_context.h"

namespace torvik {

namespace db {
class Query;
class Session;
}  // namespace db
class TKasseCollection;
class TTorvikPos;

class TAvdeling : public QObject {
    Q_OBJECT

public:
    TAvdeling(const EngineContext& context, TTorvikPos& torvikPos, QObject* owner);
    ~TAvdeling() override;

    // The engine this roster belongs to.
    [[nodiscard]] TTorvikPos& TorvikPOS() const { return torvikPos_; }
    // The back office's session, which the query is given at its next opening. Not owned.
    void SetTargetSession(db::Session* value) { target_ = value; }
    // The roster query itself: rows, current row, columns.
    [[nodiscard]] db::Query& Qry() const { return *FAvdQry; }

    // Applies the work list (which clears the other filters when no department is chosen), sets the order and opens.
    void Open();
    void Close();

    // The setters run the query again at once if it was open.
    [[nodiscard]] bool DisplayActiveOnly() const { return FDisplayActiveOnly; }
    void SetDisplayActiveOnly(bool value);
    // Below 1: all departments.
    [[nodiscard]] int Ku_Id() const { return FKu_Id; }
    void SetKu_Id(int value);
    // A comma list of store type ids.
    [[nodiscard]] QString Butikktyper() const { return FButikktyper; }
    void SetButikktyper(const QString& value);
    // A raw SQL condition that begins with "AND" or the like.
    [[nodiscard]] QString ExcludePosListSQL() const { return fExcludePosListSQL; }
    void SetExcludePosListSQL(const QString& value);
    void SetIkk_Kassenummer(const QString& value);
    // Of the current row, trimmed; empty while the query is closed.
    [[nodiscard]] QString Ikk_Kassenummer() const;
    [[nodiscard]] QString Avdelingsnummer() const;

    // The work list. An empty list means all tills; none at all leaves the filter without a till list.
    [[nodiscard]] const std::shared_ptr<TKasseCollection>& KasseCollection() const { return fKasseCollection; }
    void SetKasseCollection(std::shared_ptr<TKasseCollection> value);

    // All departments, active tills only, any till number; Butikktyper and ExcludePosListSQL stay in force.
    void ClearFilter();
    // The names of the stores, one line for each till.
    void AvdelingList(QStringList& AList);
    // -1 if there is no such department. Opens the query if need be and keeps its row.
    [[nodiscard]] int GetIk_Ku_Id(const QString& Avd);
    // Frees what the roster has come to own for the till that has been served (a TOppgjor).
    void FreeTillObjects();
    // The OLE DB connection string of the current row.
    [[nodiscard]] QString GetSourceConnectionString() const;

private:
    template <typename Change>
    void editQuery(Change change);
    void bindSession();
    [[nodiscard]] QString currentText(const QString& column) const;

    EngineContext context_;
    TTorvikPos& torvikPos_;
    db::Session* target_ = nullptr;
    std::unique_ptr<db::Query> FAvdQry;
    bool FDisplayActiveOnly = true;
    int FKu_Id = -1;
    QString FIkk_Kassenummer;
    QString FButikktyper;
    std::shared_ptr<TKasseCollection> fKasseCollection;
    QString fExcludePosListSQL;
};

}  // namespace torvik
