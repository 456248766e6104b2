// Small questions to the back office, and the weekday rule of item deletion.
#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

namespace torvik {

db::Session& TTorvikPos::target() const {
    if (!FTargeTMSConnection) throw EngineError(QStringLiteral("TargetConnection er ikke satt"));
    return *FTargeTMSConnection;
}

db::Query& TTorvikPos::generalQuery(const QStringList& sql) {
    FqryGeneralTarget->Close();
    if (!FqryGeneralTarget->Connection()) FqryGeneralTarget->SetConnection(&target());
    FqryGeneralTarget->SQL = sql;
    return *FqryGeneralTarget;
}

QString TTorvikPos::TargetServerName() const {
    return QStringLiteral("Data Source=%1").arg(target().Server());
}
QString TTorvikPos::TargetCatalog() const {
    return QStringLiteral("Catalog=%1").arg(target().Database());
}
QString TTorvikPos::TargetUserName() const {
    return QStringLiteral("User ID=%1").arg(target().Username());
}
QString TTorvikPos::TargetPassword() const {
    return QStringLiteral("Password=%1").arg(target().Password());
}

double TTorvikPos::TargetDBVersion() {
    constexpr double kNotRead = -1.0;
    if (fTargetDBVersion == kNotRead) {
        db::Query& query = generalQuery({QStringLiteral("select in_dbversjon from innstillinger")});
        query.Open();
        fTargetDBVersion = query.Fields(0).AsFloat();
        query.Close();
    }
    return fTargetDBVersion;
}

QString TTorvikPos::GetTargetServerAndDatabaseName() {
    db::Query& query = generalQuery({QStringLiteral("select @@SERVERNAME ServerName,DB_NAME() DatabaseName")});
    query.Open();
    QString text = QStringLiteral("Server: %1, database: %2")
                       .arg(query.FieldByName(QStringLiteral("ServerName")).AsString(),
                            query.FieldByName(QStringLiteral("DatabaseName")).AsString());
    query.Close();
    return text;
}

int TTorvikPos::GetTargetId(const QString& AName) {
    FqryIdTarget->Close();
    if (!FqryIdTarget->Connection()) FqryIdTarget->SetConnection(&target());
    FqryIdTarget->SQL = {QStringLiteral("EXEC GetID '%1'").arg(AName)};
    FqryIdTarget->Open();
    const auto id = static_cast<int>(FqryIdTarget->Fields(0).AsInteger());
    FqryIdTarget->Close();
    return id;
}

// A server that lacks Ik_Fakturaregel refuses the batch (error 207): it binds columns before it runs anything.
bool TTorvikPos::IsFakturaVedBackOffice(const QString& department) {
    db::Query& query = generalQuery({
        QStringLiteral("if exists ( select * from syscolumns c, sysobjects t where c.name = 'Ik_Fakturaregel' and "
                       "t.name = 'Internkunde' and t.id=c.id )"),
        QStringLiteral("  select CASE WHEN Ik_Fakturaregel IS NULL OR Ik_Fakturaregel=1 THEN 0 ELSE 1 END "
                       "FakturaVedBackOffice from Internkunde (NOLOCK) where ik_avdelingsnummer='%1'")
            .arg(department),
        QStringLiteral("else"),
        QStringLiteral("  select ik_properties&1 AS FakturaVedBackOffice from internkunde (NOLOCK) where "
                       "ik_avdelingsnummer='%1'")
            .arg(department),
    });
    query.Open();
    const bool atBackOffice = query.FieldByName(QStringLiteral("FakturaVedBackOffice")).AsInteger() == 1;
    query.Close();
    // In a chain installation the column's meaning turns round.
    return IsEnterprise ? !atBackOffice : atBackOffice;
}

bool TTorvikPos::DeleteItemsOnSend() const {
    return fDeleteItemsOnSend && DeleteItemsThisDay();
}

bool TTorvikPos::DeleteItemsThisDay() const {
    return DeleteItemsWeekDays.contains(QString::number(Seam.now().date().dayOfWeek()));
}

}  // namespace torvik
