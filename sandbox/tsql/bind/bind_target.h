// The table that an INSERT, UPDATE or DELETE changes, and the errors about its columns. Used by bind_insert.cpp and
// bind_change.cpp.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sandbox/tsql/bind/binder.h"

namespace sandbox::binder {

// "Db.dbo.t", as the error about text that does not fit names a table.
[[nodiscard]] std::string fullName(const ResolvedObject& table);
[[nodiscard]] bool isView(const ResolvedObject& found);
[[nodiscard]] bool isStored(const ColumnDef& column);  // not computed

// Empty, with the error reported, where there is none.
[[nodiscard]] std::optional<ResolvedObject> resolveTarget(Binder& binder, const ast::Target& target);

// Whether a view, a derived table or a CTE can be changed through; else the reason is reported (4403, 4417, 4418,
// 4426).
[[nodiscard]] bool requireUpdatable(Binder& binder, const Source& source, int line);
void reportSeveralTables(Binder& binder, const Source& source, int line);  // 4405, 4420
void reportDerivedColumn(Binder& binder, const Source& source, int line);  // 4406, 4421

void reportNotSupported(Binder& binder, std::string_view what, int line);
void reportMissingColumn(Binder& binder, const std::string& name, int line);  // 207
void reportNamedTwice(Binder& binder, const std::string& name, int line);     // 264
void reportNotModifiable(Binder& binder, const std::string& name, int line);  // 271

}  // namespace sandbox::binder
