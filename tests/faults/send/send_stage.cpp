// See send_stage.h.
#include "tests/faults/send/send_stage.h"

#include <QDateTime>

#include "sandbox/chain/registers/register_tables.h"
#include "sandbox/chain/registers/registrar.h"

namespace torvik::test {

namespace {

namespace chain = sandbox::chain;

const chain::ChainOptions kChain{
    .departments = 2, .tills = 2, .days = 1, .items = 12, .ordersADay = 3, .versions = {229, 137}};

// A gift card and a credit note that the till has redeemed and not handed in, while the back office holds them as
// unused and sends them; a sale of the item that is deleted on the second day; and no gift-card item, which the walk
// brings.
constexpr const char* kFirstTillRows = R"sql(
INSERT GAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, GA_BET_AVDNR, GA_BET_KASSENR,
  GA_BET_AN_ID, GA_BT_ID)
VALUES ('555', '102', '1', '100', 5, 500, '20990101', '101', '1', '100', 88)
INSERT TILGODELAPP (TG_ID, TG_AVDNR, TG_KASSENR, TG_AN_ID, TG_OR_ID, TG_BELOP, TG_GYLDIGTIL, TG_BET_AVDNR,
  TG_BET_KASSENR, TG_BET_AN_ID, TG_BT_ID)
VALUES ('556', '102', '1', '100', 6, 129, '20990101', '101', '1', '100', 89)
INSERT ORDRE (OR_ID, OR_KU_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS)
SELECT 9200, 1, MIN(AN_ID), '20260305', '20260305', 0 FROM ANSATT
INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_RABATT, OL_SALGSPRIS, OL_MVASATS, OL_KOSTPRIS, OL_MERSALG)
VALUES (9201, 9200, '100000', 1, 0, 10, 25, 5, 0)
DELETE GAVEKORTVARE
)sql";

constexpr const char* kBackOfficeRows = R"sql(
INSERT POSGAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP, GA_GYLDIGTIL, GA_SYNKTIDSPUNKT)
VALUES ('555', '102', '1', '100', 5, 500, '20990101', '20260301')
INSERT POSTilgodelapp (TG_ID, TG_AVDNR, TG_KASSENR, TG_AN_ID, TG_OR_ID, TG_BELOP, TG_GYLDIGTIL, TG_SYNKTIDSPUNKT)
VALUES ('556', '102', '1', '100', 6, 129, '20990101', '20260301')
)sql";

// The wall clock, as the databases tell it.
chain::Moment now() {
    QDateTime time = QDateTime::currentDateTime();
    time.setTimeSpec(Qt::UTC);
    return {time.toSecsSinceEpoch() * 1000};
}

void fill(const std::filesystem::path& files) {
    chain::DemoChain demo({.chain = kChain, .dataDir = files});
    const chain::Chain& model = demo.model();
    chain::KeptTables office = officeRegisters(model, [&](const chain::Till& till) {
        return demo.addressOf(static_cast<std::size_t>(&till - model.tills.data()));
    });
    const auto change = [&](const auto& work) {
        const chain::KeptTables before = office;
        work();
        for (const std::string& statement : office.changesTo(before)) demo.runInBackOffice(statement);
    };
    change([&] {
        office["Innstillinger"].find("1")->at("In_Slett_Va_ID") = std::string(chain::kReplacementItem);
        chain::Registrar(model, office, now()).work(1);
    });
    (void)SendProgram(demo.dataLink(), {}).send();
    change([&] { chain::Registrar(model, office, now()).work(2); });
    demo.runInBackOffice(kBackOfficeRows);
    demo.runInTill(0, kFirstTillRows);
}

}  // namespace

SendStage::SendStage() {
    fill(folder_.files());
    const auto running = copy();
    run_ = recordSend(running->chain, *sendProgram(*running));
    (void)sendProgram(*running)->send();
    afterTwo_ = readState(running->chain);
}

const SendStage& SendStage::get() {
    static const SendStage stage;
    return stage;
}

std::unique_ptr<ChainCopy> SendStage::copy() const {
    return std::make_unique<ChainCopy>(folder_.files(), kChain);
}

std::unique_ptr<SendProgram> sendProgram(ChainCopy& copy) {
    return std::make_unique<SendProgram>(copy.chain.dataLink(), copy.noteFolder.path());
}

}  // namespace torvik::test
