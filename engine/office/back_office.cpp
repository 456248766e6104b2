#include "engine/office/back_office.h"

#include "engine/base/abort.h"
#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/db/query.h"
#include "engine/db/session.h"

namespace torvik {

namespace {

std::unique_ptr<db::Query> newQuery() {
    auto query = std::make_unique<db::Query>();
    query->CommandTimeout = kQueryTimeout;
    return query;
}

}  // namespace

BackOffice::BackOffice(const EngineContext& context)
    : context_(context), FqryGeneralTarget(newQuery()), FqryIdTarget(newQuery()) {}

BackOffice::~BackOffice() = default;

void BackOffice::SetConnection(db::Session* value) {
    FTargeTMSConnection = value;
    FqryGeneralTarget->Close();
    FqryGeneralTarget->SetConnection(value);
}

db::Session& BackOffice::Session() const {
    if (!FTargeTMSConnection) throw EngineError(QStringLiteral("TargetConnection er ikke satt"));
    return *FTargeTMSConnection;
}

void BackOffice::Begin() {
    if (!Session().Connected()) Session().Open();
    FqryGeneralTarget->Close();
    FqryGeneralTarget->SetConnection(&Session());
    StagingShapes.Forget();
}

db::Query& BackOffice::GeneralQuery(const QStringList& sql) {
    FqryGeneralTarget->Close();
    if (!FqryGeneralTarget->Connection()) FqryGeneralTarget->SetConnection(&Session());
    FqryGeneralTarget->SQL = sql;
    return *FqryGeneralTarget;
}

QString BackOffice::ServerFragment() const {
    return QStringLiteral("Data Source=%1").arg(Session().Server());
}
QString BackOffice::CatalogFragment() const {
    return QStringLiteral("Catalog=%1").arg(Session().Database());
}
QString BackOffice::UserFragment() const {
    return QStringLiteral("User ID=%1").arg(Session().Username());
}
QString BackOffice::PasswordFragment() const {
    return QStringLiteral("Password=%1").arg(Session().Password());
}

double BackOffice::DBVersion() {
    constexpr double kNotRead = -1.0;
    if (fTargetDBVersion == kNotRead) {
        db::Query& query = GeneralQuery({QStringLiteral("select in_dbversjon from innstillinger")});
        query.Open();
        fTargetDBVersion = query.Fields(0).AsFloat();
        query.Close();
    }
    return fTargetDBVersion;
}

QString BackOffice::ServerAndDatabaseName() {
    db::Query& query = GeneralQuery({QStringLiteral("select @@SERVERNAME ServerName,DB_NAME() DatabaseName")});
    query.Open();
    QString text = QStringLiteral("Server: %1, database: %2")
                       .arg(query.FieldByName(QStringLiteral("ServerName")).AsString(),
                            query.FieldByName(QStringLiteral("DatabaseName")).AsString());
    query.Close();
    return text;
}

int BackOffice::GetTargetId(const QString& AName) {
    FqryIdTarget->Close();
    if (!FqryIdTarget->Connection()) FqryIdTarget->SetConnection(&Session());
    FqryIdTarget->SQL = {QStringLiteral("EXEC GetID '%1'").arg(AName)};
    FqryIdTarget->Open();
    const auto id = static_cast<int>(FqryIdTarget->Fields(0).AsInteger());
    FqryIdTarget->Close();
    return id;
}

// A server that lacks Ik_Fakturaregel refuses the batch (error 207): it binds columns before it runs anything.
bool BackOffice::IsFakturaVedBackOffice(const QString& department) {
    const QString number = QString(department).replace(u'\'', QStringLiteral("''"));
    db::Query& query = GeneralQuery({
        QStringLiteral("if exists ( select * from syscolumns c, sysobjects t where c.name = 'Ik_Fakturaregel' and "
                       "t.name = 'Internkunde' and t.id=c.id )"),
        QStringLiteral("  select CASE WHEN Ik_Fakturaregel IS NULL OR Ik_Fakturaregel=1 THEN 0 ELSE 1 END "
                       "FakturaVedBackOffice from Internkunde (NOLOCK) where ik_avdelingsnummer='%1'")
            .arg(number),
        QStringLiteral("else"),
        QStringLiteral("  select ik_properties&1 AS FakturaVedBackOffice from internkunde (NOLOCK) where "
                       "ik_avdelingsnummer='%1'")
            .arg(number),
    });
    query.Open();
    const bool atBackOffice = query.FieldByName(QStringLiteral("FakturaVedBackOffice")).AsInteger() == 1;
    query.Close();
    // In a chain installation the column's meaning turns round.
    return context_.Options.IsEnterprise ? !atBackOffice : atBackOffice;
}

}  // namespace torvik
