// See chain_send.h.
#include "tests/chain/chain_send.h"

#include <QDateTime>
#include <algorithm>

#include "engine/roster/avdeling.h"
#include "outbound/run/send_run.h"
#include "sandbox/chain/registers/register_tables.h"

namespace torvik::test {

namespace {

using sandbox::chain::ItemsSent;
using sandbox::chain::KeptTable;
using sandbox::chain::KeptTables;
using sandbox::chain::Moment;
using sandbox::chain::SendOptions;

// The wall clock, as the databases tell it, in whole seconds.
Moment now() {
    QDateTime time = QDateTime::currentDateTime();
    time.setTimeSpec(Qt::UTC);
    return {time.toSecsSinceEpoch() * 1000};
}

TVareOppdateringUtvalg selection(ItemsSent items) {
    return items == ItemsSent::None ? vopIngen : items == ItemsSent::Changed ? vopEndrede : vopAlle;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

const KeptTable* tableNamed(const KeptTables& tables, const std::string& name) {
    for (const KeptTable& table : tables.all())
        if (lower(table.name()) == lower(name)) return &table;
    return nullptr;
}

}  // namespace

ChainSend::ChainSend(const sandbox::chain::ChainOptions& options) : run(options) {
    joinSending(run.engine);
    run.engine.Tasks = TTasks{taSend};
    for (int day = 1; day <= 7; ++day) run.engine.DeleteItemsWeekDays << QString::number(day);
    run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    const auto& model = run.chain.model();
    office = officeRegisters(model, [this, &model](const sandbox::chain::Till& till) {
        return run.chain.addressOf(static_cast<std::size_t>(&till - model.tills.data()));
    });
    for (const sandbox::chain::Till& till : model.tills) tills.push_back(tillRegistersBefore(model, till));
    for (std::size_t i = 0; i < tills.size(); ++i) before_.push_back(restOf(i, run.tillTables(i)));
}

void ChainSend::workDay(int day) {
    change([&](KeptTables& registers) { sandbox::chain::Registrar(run.chain.model(), registers, now()).work(day); });
}

void ChainSend::change(const std::function<void(KeptTables& office)>& work) {
    const KeptTables before = office;
    work(office);
    std::string batch;
    for (const std::string& statement : office.changesTo(before)) batch += statement + "\n";
    if (!batch.empty()) run.chain.runInBackOffice(batch);
}

QStringList ChainSend::sendWithoutModel(const SendOptions& options) {
    TTorvikPos& engine = run.engine;
    engine.VareOppdateringUtvalg = selection(options.items);
    engine.SendCustomerAndPrice = options.pricesAndCustomers;
    engine.DagerSidenEndring = options.daysSinceChange;
    engine.SetDeleteItemsOnSend(options.deleteItems);
    run.errorPane.Clear();
    run.target.Open();
    engine.ExecuteDTSToPos();
    return run.errors();
}

QStringList ChainSend::send(const SendOptions& options) {
    const auto& model = run.chain.model();
    QStringList failures = sendWithoutModel(options);
    for (std::size_t i = 0; i < tills.size(); ++i) {
        const sandbox::chain::Till& till = model.tills[i];
        const sandbox::chain::Send sent{.office = office,
                                        .till = tills[i],
                                        .department = model.departmentOf(till).id,
                                        .number = till.number,
                                        .version = till.version,
                                        .options = options,
                                        .now = now()};
        sandbox::chain::send(sent);
        sandbox::chain::sendGiftCardItem(sent);
    }
    return failures;
}

void ChainSend::expectTillsAsTold(const std::string& when) {
    for (std::size_t i = 0; i < tills.size(); ++i) {
        const std::string at = when + ", till " + std::to_string(i + 1) + " of version " +
                               std::to_string(run.chain.model().tills[i].version);
        const auto tables = run.tillTables(i);
        for (const KeptTable& told : tills[i].all()) {
            const auto held = std::find_if(tables.begin(), tables.end(),
                                           [&](const auto& table) { return lower(table.first) == lower(told.name()); });
            if (held == tables.end())
                ADD_FAILURE() << at << " has no " << told.name();
            else if (told.isSummed())
                EXPECT_TRUE(run.tillHolds(i, told.data())) << at;
            else
                EXPECT_EQ(told.linesOf(held->second.columns, held->second.rows), told.lines())
                    << at << ", " << told.name() << ": found, then told";
        }
        Rest rest = restOf(i, tables);
        for (const auto& [table, rows] : before_[i]) {
            // Whole rows went or came: the other columns went or came with them.
            if (tableNamed(tills[i], table) && rest[table].size() != rows.size()) rest[table] = rows;
        }
        for (const auto& [table, rows] : rest) {
            const auto old = before_[i].find(table);
            if (old == before_[i].end())
                ADD_FAILURE() << at << " has a table that no send leaves: " << table;
            else
                EXPECT_EQ(rows, old->second) << at << ", what no send concerns of " << table;
        }
        EXPECT_EQ(rest.size(), before_[i].size()) << at;
    }
}

void ChainSend::expectNotesAsTold(const std::string& when) {
    EXPECT_TRUE(run.backOfficeHolds(office["InternKundeKasseOverfort"].data())) << when;
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM VareEksport"), "0") << when;
}

std::vector<std::map<std::string, std::string>> ChainSend::told() const {
    std::vector<std::map<std::string, std::string>> all;
    for (const KeptTables& till : tills) {
        auto& tables = all.emplace_back();
        for (const KeptTable& table : till.all()) {
            std::string& text = tables[table.name()];
            for (const auto& row : table.data().rows) {
                for (const auto& cell : row) text += sandbox::chain::cellText(cell) + " | ";
                text += "\n";
            }
        }
    }
    return all;
}

ChainSend::Rest ChainSend::restOf(std::size_t till, const std::map<std::string, ChainRun::Table>& tables) const {
    Rest rest;
    for (const auto& [name, table] : tables) {
        const KeptTable* told = tableNamed(tills[till], name);
        std::vector<std::string> lines;
        bool any = false;
        for (std::size_t c = 0; c < table.columns.size(); ++c) {
            if (told && (told->isSummed() || told->has(table.columns[c]))) continue;
            any = true;
            lines.resize(table.rows.size());
            for (std::size_t r = 0; r < table.rows.size(); ++r) lines[r] += table.rows[r][c] + " | ";
        }
        std::sort(lines.begin(), lines.end());
        if (any) rest[name] = std::move(lines);
    }
    return rest;
}

}  // namespace torvik::test
