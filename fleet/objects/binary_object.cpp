#include "fleet/objects/binary_object.h"

#include <QFile>

#include "engine/base/abort.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/statement_text.h"
#include "fleet/objects/staged_file.h"

namespace torvik {

namespace {

constexpr int kPutTimeout = 600;  // seconds

constexpr char kEnsureColumns[] =
    R"(if not exists ( select * from syscolumns c, sysobjects t where c.name = 'BO_ID' and t.name = 'BINARYOBJECT' and t.id=c.id )
ALTER TABLE BINARYOBJECT ADD BO_ID int null
if not exists ( select * from syscolumns c, sysobjects t where c.name = 'BO_TYPE' and t.name = 'BINARYOBJECT' and t.id=c.id )
ALTER TABLE BINARYOBJECT ADD   BO_TYPE varchar(20) null
if not exists ( select * from syscolumns c, sysobjects t where c.name = 'BO_DATETIME' and t.name = 'BINARYOBJECT' and t.id=c.id )
ALTER TABLE BINARYOBJECT ADD   BO_DATETIME datetime null
if not exists ( select * from syscolumns c, sysobjects t where c.name = 'BO_DIRECTION' and t.name = 'BINARYOBJECT' and t.id=c.id )
ALTER TABLE BINARYOBJECT ADD   BO_DIRECTION bit null
if not exists ( select * from syscolumns c, sysobjects t where c.name = 'BO_STATUS' and t.name = 'BINARYOBJECT' and t.id=c.id )
ALTER TABLE BINARYOBJECT ADD   BO_STATUS int null)";

constexpr char kLastNumber[] = "select max(bo_id) from binaryobject";

qint64 nextNumber(db::Session& till) {
    db::Query last(&till);
    last.SQL = QStringList{QString::fromUtf8(kLastNumber)};
    last.Open();
    return last.Fields(0).IsNull() ? 1 : last.Fields(0).AsInteger() + 1;
}

QStringList columnsOf(db::Session& till, const BinaryObject& object) {
    db::Query rows(&till);
    rows.ParamCheck = false;
    rows.SQL = statementLines(object.query);
    rows.Open();
    return rows.FieldNames();
}

}  // namespace

void EnsureBinaryObjectColumns(db::Session& till) {
    db::Query ensure(&till);
    ensure.ParamCheck = false;
    ensure.SQL = statementLines(kEnsureColumns);
    ensure.ExecSQL();
}

void writeBinaryObject(db::Session& till, const Seams& seam, const BinaryObject& object) {
    const qint64 number = nextNumber(till);
    const QStringList present = columnsOf(till, object);
    StagedFile staged(till);
    staged.load(object.file, seam.pumpMessages);

    // BO_OBJECT is not looked for: a table without it refuses the statement.
    const std::pair<const char*, QString> columns[] = {
        {"BO_ID", QString::number(number)},
        {"BO_OBJECT", staged.expression()},
        {"BO_TYPE", u'\'' + quotesDoubled(object.type) + u'\''},
        {"BO_DATETIME", db::DateTime(seam.now()).literal()},
        {"BO_STATUS", QStringLiteral("0")},
        {"BO_DIRECTION", QStringLiteral("0")},
    };
    QStringList names;
    QStringList values;
    for (const auto& [name, value] : columns) {
        const QString column = QString::fromUtf8(name);
        if (column != u"BO_OBJECT" && !present.contains(column, Qt::CaseInsensitive)) continue;
        names << column;
        values << value;
    }
    db::Query put(&till);
    put.ParamCheck = false;
    put.CommandTimeout = kPutTimeout;
    put.SQL = statementLines(QStringLiteral("INSERT INTO BINARYOBJECT (%1)\nSELECT %2")
                                 .arg(names.join(QStringLiteral(", ")), values.join(QStringLiteral(", "))));
    put.ExecSQL();
    if (put.RowsAffected() != 1)
        throw EngineError(QStringLiteral("Raden i BINARYOBJECT ble ikke skrevet (%1)").arg(object.type));
}

}  // namespace torvik
