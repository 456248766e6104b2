// A whole send of 100,000 items, 100,000 prices, 120,000 aliases and 20,000 customers to one till, against freebcp and
// tsql doing the same to another; the memory that it takes. Then to the same till a send of changes with nothing
// changed, and one with a hundredth of the items changed. Of each the round trips by side, and its time by step.
// Another number of items can be given, with a fifth of it as customers.
#include <QCoreApplication>
#include <QLocale>
#include <map>

#include "bench/chain_process.h"
#include "bench/figure.h"
#include "bench/memory.h"
#include "bench/plain_send.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "outbound/driver/dm_torvik_to_pos.h"
#include "tests/support/chain_program.h"

namespace {

using namespace torvik;
using sandbox::chain::DemoChain;

constexpr int kItems = 100'000;
constexpr int kVersion = 229;
// Of the chain's items; beside them stand a few with higher numbers.
constexpr int kFirstNumber = 100'000;

sandbox::chain::ChainOptions chainOf(int items) {
    return {.departments = 1,
            .tills = 2,
            .days = 0,
            .items = items,
            .tillItems = 1,
            .customers = items / 5,
            .versions = {kVersion}};
}

// The first `count` items of the chain.
std::string firstItems(int count) {
    return " Va_Id < '" + std::to_string(kFirstNumber + count) + "' AND LEN(Va_Id) = 6";
}

// One price and one alias an item, a second alias for each fifth, no discount cards, and nothing changed lately.
void fill(DemoChain& chain, int items) {
    chain.runInBackOffice("DELETE Pris WHERE Ps_Pi_Id <> 1");
    chain.runInBackOffice("DELETE POSRABATTKORT");
    chain.runInBackOffice("DELETE VareAlias");
    chain.runInBackOffice(
        "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) SELECT '7040' + RTRIM(Va_Id), Va_Id, 'Alias' FROM Vare "
        "WHERE Va_Id < '9'");
    chain.runInBackOffice(
        "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) SELECT '7050' + RTRIM(Va_Id), Va_Id, 'Alias to' FROM Vare "
        "WHERE" +
        firstItems(items / 5));
    chain.runInBackOffice("UPDATE Vare SET Va_SendTilButikkKasser = 0");
    chain.runInBackOffice("UPDATE Kunde SET Ku_UpdDato = DATEADD(day, -90, GETDATE())");
    chain.runInBackOffice("UPDATE Pris SET Ps_UpdDato = DATEADD(day, -90, GETDATE())");
}

QString scalar(db::Session& session, const char* sql) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.CommandTimeout = 600;
    query.SQL = QStringList{QString::fromUtf8(sql)};
    query.Open();
    return query.Fields(0).AsString();
}

void change(db::Session& session, const std::string& sql) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.CommandTimeout = 600;
    query.SQL = QStringList{QString::fromStdString(sql)};
    query.ExecSQL();
}

// What the till holds of what was sent.
QString held(db::Session& till) {
    QStringList all;
    for (const char* sql :
         {"SELECT CONVERT(varchar(20), COUNT(*)) + ' ' + CONVERT(varchar(40), SUM(VA_PRIS)) FROM VARE",
          "SELECT CONVERT(varchar(20), COUNT(*)) + ' ' + CONVERT(varchar(40), SUM(PS_PRISEN)) FROM PRIS",
          "SELECT CONVERT(varchar(20), COUNT(*)) + ' ' + MAX(VR_NAVN) FROM VAREALIAS",
          "SELECT CONVERT(varchar(20), COUNT(*)) + ' ' + MAX(KU_ADRESSE1) FROM KUNDE",
          "SELECT CONVERT(varchar(20), COUNT(*)) FROM DELVARE"})
        all << scalar(till, sql);
    return all.join(QStringLiteral(", "));
}

void require(const QString& has, const QString& wanted) {
    if (has != wanted) throw std::runtime_error(("the send brought " + has + " for " + wanted).toStdString());
}

// The data module on the sessions of a program, and how long each of its steps has taken.
class MeasuredSend {
public:
    explicit MeasuredSend(test::ChainProgram& program) : program_(program) {
        dm_.SetSourceConnection(&program.target);
        dm_.SetDestinationConnection(&program.source);
        dm_.SendPriceAndCustomer = true;
        dm_.OnProgress = [this](QObject*, int, const QString&) { atStep(dm_.CurrentTransformation()); };
    }
    // To the roster's current till.
    double send(TItemUpdateSelection items) {
        program_.engine.ApplySourceConnectionSettings();
        program_.source.Open();
        dm_.Ik_Ku_ID =
            static_cast<int>(program_.engine.Avdeling->Qry().FieldByName(QStringLiteral("Ik_Ku_Id")).AsInteger());
        dm_.KasseNr = program_.engine.Avdeling->Ikk_Kassenummer();
        dm_.ItemUpdateSelection = items;
        steps_.clear();
        step_.clear();
        since_ = std::chrono::steady_clock::now();
        const double taken = bench::seconds([&] { dm_.Execute(); });
        atStep({});
        return taken;
    }
    void tellSteps() const {
        for (const auto& [step, taken] : steps_)
            if (taken >= kWorthTelling) std::cout << "  " << step.toStdString() << ": " << taken << " s" << std::endl;
    }

private:
    static constexpr double kWorthTelling = 0.05;

    void atStep(const QString& step) {
        const auto now = std::chrono::steady_clock::now();
        steps_[step_] += std::chrono::duration<double>(now - since_).count();
        since_ = now;
        step_ = step;
    }

    test::ChainProgram& program_;
    TdmTorvikToPOS dm_;
    std::chrono::steady_clock::time_point since_;
    QString step_;
    std::map<QString, double> steps_;
};

bench::PlainServer serverOf(const db::Session& session) {
    return {session.Server(), session.Database(), session.Username(), session.Password()};
}

// A number as it is written in a name: 100,000.
std::string written(int number) {
    return QLocale(QLocale::English).toString(number).toStdString();
}

class Measurement {
public:
    Measurement(const bench::ChainProcess& chain, int items)
        : chain_(chain), items_(items), program_(chain.dataLink()) {
        program_.target.Open();
        program_.engine.Avdeling->Open();
    }

    void wholeSend() {
        TAvdeling& roster = *program_.engine.Avdeling;
        roster.Qry().Last();
        program_.engine.ApplySourceConnectionSettings();
        program_.source.Open();
        bench::PlainSend plain(serverOf(program_.target), serverOf(program_.source),
                               {.Ik_Ku_ID = 1001,
                                .KasseNr = roster.Ikk_Kassenummer().trimmed(),
                                .SessionID = QStringLiteral("9999"),
                                .TorvikPOSversion = kVersion,
                                .ItemUpdateSelection = iusAll,
                                .SendPriceAndCustomer = true,
                                .tillTables = {"KUPONG"}});
        const double scripted = bench::seconds([&] { plain.run(); });
        const QString wanted = held(program_.source);

        roster.Qry().First();
        bench::forgetPeakOfMemory();
        const double before = bench::processMegabytes("VmRSS");
        const std::string name = "whole send of " + written(items_) + " items";
        const double sent = measured(name, iusAll);
        const double grown = bench::processMegabytes("VmHWM") - before;
        require(held(program_.source), wanted);

        bench::tell({name + ", by freebcp and tsql", scripted, "s", {}, {}});
        bench::tell(name, sent, "s", "freebcp and tsql", scripted);
        bench::tell(name + ", memory more than before", grown, "MB", "64 MB at most", 64);
    }

    void sendOfNothing() {
        const std::string name = "idle send to a till of " + written(items_) + " items";
        bench::tell({name, measured(name, iusChanged), "s", {}, {}});
    }

    // Each with a new price of its own and in its category.
    void sendOfChanges() {
        const int changed = items_ / 100;
        const std::string items = firstItems(changed);
        change(program_.target, "UPDATE Vare SET Va_Pris = Va_Pris + 1, Va_SendTilButikkKasser = 1 WHERE" + items);
        change(program_.target,
               "UPDATE Pris SET Ps_Prisen = Ps_Prisen + 1, Ps_UpdDato = GETDATE() WHERE Ps_Va_Id IN (SELECT Va_Id FROM "
               "Vare WHERE" +
                   items + ")");
        const std::string name = "send of " + written(changed) + " changed items";
        bench::tell({name, measured(name, iusChanged), "s", {}, {}});
        const char* sum = "SELECT CONVERT(varchar(40), SUM(Va_Pris)) FROM Vare WHERE Va_Id < '9'";
        require(scalar(program_.source, sum), scalar(program_.target, sum));
        // The till keeps the prices that have come with the send.
        require(scalar(program_.source, "SELECT CONVERT(varchar(20), COUNT(*)) FROM PRIS"), QString::number(changed));
    }

private:
    // A send to the first till: its seconds. Tells its steps and its round trips.
    double measured(const std::string& name, TItemUpdateSelection items) {
        const auto before = chain_.requests();
        const double taken = send_.send(items);
        const auto after = chain_.requests();
        std::cout << name << ", by step:" << std::endl;
        send_.tellSteps();
        const char* sides[] = {"back office", "till"};
        for (std::size_t side = 0; side < std::size(sides); ++side)
            bench::tell({name + ", round trips to the " + sides[side],
                         static_cast<double>(after[side] - before[side]),
                         "requests",
                         {},
                         {}});
        return taken;
    }

    const bench::ChainProcess& chain_;
    int items_;
    test::ChainProgram program_;
    MeasuredSend send_{program_};
};

}  // namespace

int main(int argc, char** argv) {
    const int items = argc > 1 ? std::stoi(argv[1]) : kItems;
    const bench::ChainProcess chain(chainOf(items), [&](DemoChain& demo) { fill(demo, items); });
    const QCoreApplication application(argc, argv);
    Measurement measurement(chain, items);
    measurement.wholeSend();
    measurement.sendOfNothing();
    measurement.sendOfChanges();
}
