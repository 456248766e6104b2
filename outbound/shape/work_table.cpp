#include "outbound/shape/work_table.h"

#include <QStringList>

namespace torvik {

namespace {

constexpr char kDropTable[] = R"(if exists (select 1 from  sysobjects where  id = object_id('%1') and   type = 'U')
  drop table %1)";

}  // namespace

QString dropTableSql(const char* name) {
    return QString::fromUtf8(kDropTable).arg(QString::fromUtf8(name));
}

QString createTablesSql(std::span<const WorkTable* const> tables) {
    QStringList lines;
    for (const WorkTable* table : tables) lines << dropTableSql(table->name) << QString::fromUtf8(table->create);
    return lines.join(QLatin1Char('\n'));
}

}  // namespace torvik
