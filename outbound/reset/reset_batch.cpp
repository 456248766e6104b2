#include "outbound/reset/reset_batch.h"

#include <span>

namespace torvik {

namespace {

struct Deletion {
    const char* table;
    bool everyTillHasIt = false;
};

constexpr char kDelete[] = "delete from %1";
constexpr char kDeleteIfThere[] =
    "if exists ( select 1 from sysobjects where name = '%1' and xtype='U' ) delete from %1";

constexpr Deletion kSignatures[] = {{"betalingsignatur"}, {"generellsignatur"}};

// A till that resets itself does so in place of these.
constexpr const char* kUnlessItResetsItself[] = {
    "if exists ( select 1 from sysobjects where name = 'ResetDB' and xtype='P' )",
    "EXEC ResetDB",
    "ELSE",
    "BEGIN",
};
constexpr Deletion kSales[] = {
    {"logg", true},          {"ordre", true},       {"kasseuttak"},  {"varemottaklinje"}, {"varemottak"},
    {"ekstraansattoppgjor"}, {"Reklamasjonlinje"},  {"Reklamasjon"}, {"Vedlegg"},         {"oppgjor", true},
    {"gavekort", true},      {"tilgodelapp", true}, {"timer"},       {"melding"},         {"meldingvedlegg"},
};
constexpr char kEndOfSales[] = "END";

// The settings let go of their items before these go.
constexpr Deletion kAroundItems[] = {{"mersalgvare"}, {"gavekortvare"}, {"varegruppe"}, {"varealias"}};
constexpr char kReleaseSmartCardItem[] =
    "if exists ( select 1 from syscolumns where name = 'IN_SMARTKORT_VA_ID' ) update innstillinger set in_smartkort_va_id=null";
constexpr Deletion kKeys[] = {{"plumedlem"}, {"plu"}};
constexpr char kReleaseItem[] =
    "if exists (select 1 from sysobjects t join syscolumns c on t.id = c.id where t.name = 'Innstillinger' and c.name = '%1')update Innstillinger set %1 = null";
constexpr const char* kItemsOfSettings[] = {
    "IN_FAKTURAGEBYR_VA_ID", "IN_SMARTKORT_VA_ID", "IN_MIFARE_VA_ID", "IN_BONUS_VA_ID", "IN_BETALING_VA_ID",
};
constexpr Deletion kItems[] = {{"vare"}};

constexpr Deletion kCustomers[] = {{"rabattkortkunde"}, {"kunde"}};
constexpr Deletion kStaff[] = {{"adgangskort"}, {"arbeidsplan"}, {"ansatt"}};

constexpr char kSeriesAreBehind[] =
    "if exists (select 1 from sysobjects t join syscolumns c on t.id = c.id where t.name = 'Innstillinger' and c.name = 'IN_NUMMERSERIER_SYNKRONISERT') update Innstillinger set IN_NUMMERSERIER_SYNKRONISERT = 0";

class Batch {
public:
    void add(const char* line) { lines_ << QString::fromUtf8(line); }
    void add(std::span<const Deletion> deletions) {
        for (const Deletion& deletion : deletions)
            lines_ << QString::fromUtf8(deletion.everyTillHasIt ? kDelete : kDeleteIfThere)
                          .arg(QString::fromUtf8(deletion.table));
    }
    void addReleases() {
        for (const char* column : kItemsOfSettings)
            lines_ << QString::fromUtf8(kReleaseItem).arg(QString::fromUtf8(column));
    }
    [[nodiscard]] const QStringList& lines() const { return lines_; }

private:
    QStringList lines_;
};

}  // namespace

QStringList ResetBatch(const TInitializeItems& items) {
    Batch batch;
    batch.add(kSignatures);
    for (const char* line : kUnlessItResetsItself) batch.add(line);
    batch.add(kSales);
    batch.add(kEndOfSales);
    if (items.contains(nutvVare)) {
        batch.add(kAroundItems);
        batch.add(kReleaseSmartCardItem);
        batch.add(kKeys);
        batch.addReleases();
        batch.add(kItems);
    }
    if (items.contains(nutvKunde)) batch.add(kCustomers);
    if (items.contains(nutvAnsatt)) batch.add(kStaff);
    batch.add(kSeriesAreBehind);
    return batch.lines();
}

}  // namespace torvik
