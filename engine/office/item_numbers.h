// The back office's item numbers and aliases, loaded once a run so that the check of a sold item's number costs no
// round trip.
#pragma once

#include <QString>
#include <memory>

#include "engine/base/engine_context.h"

namespace torvik {

namespace db {
class MemTable;
}
class BackOffice;
class OperatorLog;

class ItemNumbers {
public:
    ItemNumbers(const EngineContext& context, BackOffice& office, OperatorLog& log);
    ~ItemNumbers();

    void LoadVareTable();
    void LoadVareAliasTable();
    // Both, and the line that tells how many.
    void Load();
    // The item number to use for one found on a till; raises EngineError when neither it nor ReplacementVa_Id exists.
    [[nodiscard]] QString ResolveVaId(const QString& Va_Id) const;

    // The loaded tables.
    [[nodiscard]] db::MemTable& VareTable() const { return *Vare; }
    [[nodiscard]] db::MemTable& VareAliasTable() const { return *VareAlias; }

private:
    void load(db::MemTable& table, const QString& sql);

    EngineContext context_;
    BackOffice& office_;
    OperatorLog& log_;
    std::unique_ptr<db::MemTable> Vare;
    std::unique_ptr<db::MemTable> VareAlias;
};

}  // namespace torvik
