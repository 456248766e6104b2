// The staging tables that the fetch itself makes on the back office. Used by the step CreateTempTables.
#pragma once

#include <QStringList>

namespace torvik {

// One batch: for each table a test and, where it is missing, its CREATE TABLE and CREATE INDEX.
[[nodiscard]] QStringList createTempTablesSql();

}  // namespace torvik
