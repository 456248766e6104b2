// Scripts first, then rows, parents before children.
#include "sandbox/chain/install.h"

#include "sandbox/chain/scripts.h"

namespace sandbox::chain {

namespace {

constexpr const char* kBackOfficeScripts[] = {"back_office", "back_office_pos", "back_office_sales",
                                              "back_office_procedures", "back_office_send"};

void runScript(std::string_view name, const RunBatch& run) {
    for (const std::string_view batch : batchesOf(name)) run(batch);
}

void insertAll(const std::vector<TableData>& tables, const Filling& filling) {
    for (const TableData& table : tables) {
        if (filling.insert)
            filling.insert(table);
        else
            for (const std::string& batch : insertBatches(table)) filling.run("SET NOCOUNT ON\n" + batch);
    }
}

}  // namespace

void installBackOffice(const Chain& chain, const std::function<TillAddress(const Till&)>& addressOf,
                       const Filling& filling) {
    for (const char* script : kBackOfficeScripts) runScript(script, filling.run);
    insertAll(backOfficeTables(chain, addressOf), filling);
}

void installTill(const Chain& chain, const Till& till, const Filling& filling) {
    for (const std::string_view script : tillScripts(till.version)) runScript(script, filling.run);
    filling.run("UPDATE INNSTILLINGER SET IN_AVDNR = '" + chain.departmentOf(till).number + "', IN_KASSENR = '" +
                till.number + "', IN_NAVN = '" + chain.departmentOf(till).name + "'");
    insertAll(tillRegisters(chain, till), filling);
    insertAll(tillSales(chain, till), filling);
}

}  // namespace sandbox::chain
