// See fault_stage.h.
#include "tests/faults/fault_stage.h"

#include <QDir>

namespace torvik::test {

namespace {

namespace fs = std::filesystem;

const sandbox::chain::ChainOptions kChain{
    .departments = 2, .tills = 2, .days = 2, .items = 12, .ordersADay = 5, .versions = {229, 137}};

// What the made-up sales lack: rows for every step of the transfer, gift cards for more than one batch, and a sale on
// credit in each settlement.
constexpr const char* kFirstTillRows = R"sql(
INSERT KUNDE (KU_ID, KU_NAVN) VALUES (29001, 'Kredittkunde')
INSERT ANSATT (AN_ID, AN_NAVN, AN_AKTIV, AN_RABATT, AN_RABKUNPAAORDPRIS, AN_NIVAA)
VALUES ('900', 'Ny ansatt', 1, 0, 0, 1)

INSERT ORDRE (OR_ID, OR_KU_ID, OR_OP_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS, OR_REKVISISJONSNUMMER)
SELECT 9000 + OP_ID, 29001, OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TIDSPUNKT, 0, 'Rekvisisjon'
FROM OPPGJOR WHERE OP_TYPE = 'NORMAL'
INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_SALGSPRIS, OL_RABATT, OL_MVASATS, OL_KOSTPRIS, OL_MERSALG)
SELECT OR_ID, OR_ID, (SELECT MIN(VA_ID) FROM VARE), 2, 125, 10, 25, 0, 0 FROM ORDRE WHERE OR_ID > 9000
INSERT ORDREGRUNN (OG_OR_ID, OG_GR_ID) SELECT OR_ID, 1 FROM ORDRE WHERE OR_ID > 9000
INSERT ORDRELINJEGRUNN (OLG_OL_ID, OLG_GR_ID) SELECT OL_ID, 1 FROM ORDRELINJE WHERE OL_ID > 9000
INSERT BETALING (BT_ID, BT_BF_ID, BT_OR_ID, BT_BELOP) SELECT OR_ID, 6, OR_ID, 225 FROM ORDRE WHERE OR_ID > 9000
INSERT UTBETALING (UB_BT_ID, UB_NAVN, UB_KONTO) SELECT BT_ID, 'Kari Nordmann', '12345678903' FROM BETALING WHERE BT_ID > 9000

INSERT ORDRESIGNATUR (ORSI_OR_ID, ORSI_SI_ID, ORSI_SIT_ID)
SELECT OR_ID, (SELECT MIN(SI_ID) FROM SIGNATUR), 3 FROM ORDRE WHERE OR_ID > 9000
INSERT ORDRERETUR (ORE_ID, ORE_OR_ID, ORE_RETUR_OR_ID, ORE_RETUR_AVDNR, ORE_RETUR_KASSENR)
SELECT OR_ID, OR_ID, 1, '101', '1' FROM ORDRE WHERE OR_ID > 9000

INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS) VALUES
  (1, '900', '20260302 08:00', '20260302 16:00', 1, 1), (2, '900', '20260303 08:00', '20260303 16:00', 1, 2)
INSERT TIMERPRKODE (TPK_TI_ID, TPK_TK_ID, TPK_TID) SELECT TI_ID, 1, '20260302 07:30' FROM TIMER
UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260304'

INSERT EKSTRAANSATTOPPGJOR (EAO_ID, EAO_AN_ID, EAO_OP_ID, EAO_NAVN, EAO_TIDSPUNKT)
SELECT OP_ID, '900', OP_ID, 'Ekstrahjelp', OP_TIDSPUNKT FROM OPPGJOR
INSERT LOGG (LO_ID, LO_AN_ID, LO_LT_ID, LO_OP_ID, LO_TIDSPUNKT) SELECT OP_ID, '900', 1, OP_ID, OP_TIDSPUNKT FROM OPPGJOR
INSERT VAREMOTTAK (VM_ID, VM_AN_ID, VM_OP_ID, VM_TIDSPUNKT) SELECT OP_ID, '900', OP_ID, OP_TIDSPUNKT FROM OPPGJOR
INSERT VAREMOTTAKLINJE (VML_ID, VML_VM_ID, VML_VA_ID, VML_ANTALL, VML_PRIS)
SELECT VM_ID, VM_ID, (SELECT MIN(VA_ID) FROM VARE), 10, 50 FROM VAREMOTTAK
INSERT VAREBESTILLING (VB_ID, VB_OP_ID, VB_AN_ID, VB_TIDSPUNKT) SELECT OP_ID, OP_ID, '900', OP_TIDSPUNKT FROM OPPGJOR
INSERT VAREBESTILLINGLINJE (VBL_ID, VBL_VB_ID, VBL_VA_ID, VBL_ANTALL)
SELECT VB_ID, VB_ID, (SELECT MIN(VA_ID) FROM VARE), 10 FROM VAREBESTILLING

DECLARE @Kort int
SET @Kort = 1
WHILE @Kort <= 17
BEGIN
  INSERT GAVEKORT (GA_ID, GA_AVDNR, GA_KASSENR, GA_AN_ID, GA_OL_ID, GA_BELOP)
  VALUES ('G' + CONVERT(varchar(10), @Kort), '101', '1', '900', 9001, 100)
  INSERT TILGODELAPP (TG_ID, TG_AVDNR, TG_KASSENR, TG_AN_ID, TG_OR_ID, TG_BELOP)
  VALUES ('T' + CONVERT(varchar(10), @Kort), '101', '1', '900', 9001, 50)
  SET @Kort = @Kort + 1
END
)sql";

constexpr const char* kManyLines = R"sql(
DECLARE @Linje int
SET @Linje = 1
WHILE @Linje <= 300
BEGIN
  INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_SALGSPRIS, OL_RABATT, OL_MVASATS, OL_KOSTPRIS, OL_MERSALG)
  SELECT 20000 + @Linje, MIN(OR_ID), (SELECT MIN(VA_ID) FROM VARE), 1, 10 + @Linje, 0, 25, 5, 0 FROM ORDRE WHERE OR_ID > 9000
  SET @Linje = @Linje + 1
END
)sql";

// The rest of a run's requests to a till with this text cut its connection, as long as this stands.
class Cut {
public:
    Cut(sandbox::Server& server, const char* text, std::uint64_t skip) : server_(server) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.skip = skip;
        rule_ = server.faults().add(rule);
    }
    ~Cut() { server_.faults().remove(rule_); }
    Cut(const Cut&) = delete;
    Cut& operator=(const Cut&) = delete;

private:
    sandbox::Server& server_;
    int rule_;
};

// Every run tells the back office how much each till has left to settle, before it begins the first transaction. It is
// told here once, so that the states of the cases differ in what the transactions did alone.
void installWith(std::initializer_list<const char*> rowsOfFirstTill, const fs::path& files) {
    sandbox::chain::DemoChain chain({.chain = kChain, .dataDir = files});
    for (const char* rows : rowsOfFirstTill) chain.runInTill(0, rows);
    const Cut first(chain.till(0), "BEGIN TRANSACTION", 0);
    const Cut second(chain.till(1), "BEGIN TRANSACTION", 0);
    ChainProgram(chain.dataLink()).fetch();
}

void installUnfetched(const fs::path& files) {
    installWith({kFirstTillRows}, files);
}

void installBusy(const fs::path& files) {
    installWith({kFirstTillRows, kManyLines}, files);
}

void transferFirstTill(const fs::path& files) {
    const auto unfetched = FaultStage::unfetched().copy();
    {
        const Cut atFirstSettlement(unfetched->chain.till(0), "BEGIN TRANSACTION", 1);
        unfetched->program()->fetch();
    }
    const fs::path from = unfetched->folder.files();
    // Closed before its files are copied.
    struct Close {
        sandbox::chain::DemoChain chain;
    };
    { const Close closed{std::move(unfetched->chain)}; }
    fs::copy(from, files, fs::copy_options::recursive);
}

sandbox::chain::DemoChain openCopyOf(const fs::path& files, const sandbox::chain::ChainOptions& options,
                                     const ChainFolder& folder) {
    fs::copy(files, folder.files(), fs::copy_options::recursive);
    return sandbox::chain::DemoChain({.chain = options, .dataDir = folder.files()});
}

}  // namespace

ChainCopy::ChainCopy(const fs::path& files, const sandbox::chain::ChainOptions& options)
    : chain(openCopyOf(files, options, folder)) {}

std::unique_ptr<FaultProgram> ChainCopy::program() {
    return std::make_unique<FaultProgram>(chain.dataLink(), noteFolder.path());
}

std::size_t ChainCopy::standingPairs() {
    return countStandingPairs(chain);
}

std::size_t ChainCopy::notes() const {
    return static_cast<std::size_t>(QDir(noteFolder.path()).entryList({QStringLiteral("par-*")}).size());
}

FaultStage::FaultStage(const std::function<void(const fs::path&)>& fill) {
    fill(folder_.files());
    const auto running = copy();
    run_ = record(running->chain, *running->program());
}

const FaultStage& FaultStage::unfetched() {
    static const FaultStage stage(installUnfetched);
    return stage;
}

const FaultStage& FaultStage::transferred() {
    static const FaultStage stage(transferFirstTill);
    return stage;
}

const FaultStage& FaultStage::busy() {
    static const FaultStage stage(installBusy);
    return stage;
}

std::unique_ptr<ChainCopy> FaultStage::copy() const {
    return std::make_unique<ChainCopy>(folder_.files(), kChain);
}

}  // namespace torvik::test
