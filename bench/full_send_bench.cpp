// A whole send of 100,000 items, 100,000 prices, 120,000 aliases and 20,000 customers to one till, against freebcp and
// tsql doing the same to another; the memory that it takes, and its time by step.
#include <QCoreApplication>

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
constexpr int kCustomers = 20'000;
constexpr int kVersion = 229;

sandbox::chain::ChainOptions chainOf(int tills) {
    return {.departments = 1,
            .tills = tills,
            .days = 0,
            .items = kItems,
            .tillItems = 1,
            .customers = kCustomers,
            .versions = {kVersion}};
}

// One price and one alias an item, a second alias for each fifth, and no discount cards.
void fill(DemoChain& chain) {
    chain.runInBackOffice("DELETE Pris WHERE Ps_Pi_Id <> 1");
    chain.runInBackOffice("DELETE POSRABATTKORT");
    chain.runInBackOffice("DELETE VareAlias");
    chain.runInBackOffice(
        "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) SELECT '7040' + RTRIM(Va_Id), Va_Id, 'Alias' FROM Vare "
        "WHERE Va_Id < '9'");
    chain.runInBackOffice(
        "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) SELECT '7050' + RTRIM(Va_Id), Va_Id, 'Alias to' FROM Vare "
        "WHERE Va_Id < '12'");
    chain.runInBackOffice("UPDATE Vare SET Va_SendTilButikkKasser = 0");
}

QString scalar(db::Session& session, const char* sql) {
    db::Query query(&session);
    query.ParamCheck = false;
    query.CommandTimeout = 600;
    query.SQL = QStringList{QString::fromUtf8(sql)};
    query.Open();
    return query.Fields(0).AsString();
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

void measureWholeSend(const std::string& dataLink) {
    test::ChainProgram program(dataLink);
    program.target.Open();
    TAvdeling& roster = *program.engine.Avdeling;
    roster.Open();

    roster.Qry().Last();
    program.engine.ApplySourceConnectionSettings();
    program.source.Open();
    bench::PlainSend plain(serverOf(program.target), serverOf(program.source),
                           {.Ik_Ku_ID = 1001,
                            .KasseNr = roster.Ikk_Kassenummer().trimmed(),
                            .SessionID = QStringLiteral("9999"),
                            .TorvikPOSversion = kVersion,
                            .ItemUpdateSelection = iusAll,
                            .SendPriceAndCustomer = true,
                            .tillTables = {"KUPONG"}});
    const double scripted = bench::seconds([&] { plain.run(); });
    const QString wanted = held(program.source);

    roster.Qry().First();
    MeasuredSend send(program);
    bench::forgetPeakOfMemory();
    const double before = bench::processMegabytes("VmRSS");
    const double sent = send.send(iusAll);
    const double grown = bench::processMegabytes("VmHWM") - before;
    if (const QString has = held(program.source); has != wanted)
        throw std::runtime_error(("the send brought " + has + " for " + wanted).toStdString());
    std::cout << "a whole send: " << wanted.toStdString() << std::endl;
    send.tellSteps();

    bench::tell({"whole send of 100,000 items, by freebcp and tsql", scripted, "s", {}, {}});
    bench::tell("whole send of 100,000 items", sent, "s", "freebcp and tsql", scripted);
    bench::tell("the same, memory more than before", grown, "MB", "64 MB at most", 64);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::ChainProcess chain(chainOf(2), fill);
    const QCoreApplication application(argc, argv);
    measureWholeSend(chain.dataLink());
}
