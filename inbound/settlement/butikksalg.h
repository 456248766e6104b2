// Posts one settlement's sales to the back office's store statistics and item stock: an aggregate per item and line
// status through UpdateButikksalg2, and one per hour into timesalg. SettlementPosting owns one, which serves all
// settlements of its till, and runs it inside each settlement's pair of transactions. docs/settlements.md tells the
// rules.
#pragma once

#include <QHash>
#include <QStringList>
#include <vector>

#include "engine/db/query.h"
#include "engine/run/till_visit.h"

namespace torvik {

struct TButikksalgItem {
    int Ik_Ku_Id = 0;
    db::DateTime Dato;
    int Ol_Status = 0;
    QString Va_Id;  // upper case
    double Antall = 0;
    double Omsetning = 0;
};

class TButikksalg {
public:
    // The till is connected to: its schema version decides the text of the queries.
    explicit TButikksalg(const TillVisit& visit);

    [[nodiscard]] int Op_Id() const { return opId_; }
    // An open query reads the settlement's rows at once; a closed one only gets its text.
    void SetOp_Id(int value);
    [[nodiscard]] const QString& Avdelingsnummer() const { return avdelingsnummer_; }
    // Raises EngineError for a department that the roster does not have.
    void SetAvdelingsnummer(const QString& value);
    QString KasseNr;
    db::DateTime Dato;

    // Posts the settlement. Raises EngineError without a date or department, and for an item that neither exists nor
    // can be replaced; the collection is empty before and, when it succeeds, after.
    void Execute();
    // Adds one line to the aggregate of its item and status.
    void AddSale(const QString& Va_Id, int Ol_Status, double Antall, double Omsetning);
    [[nodiscard]] const std::vector<TButikksalgItem>& Collection() const { return ButikksalgCollection; }

    // The text of the two queries on the till.
    [[nodiscard]] const QStringList& OrdreSql() const { return FOrdreQry.SQL; }
    [[nodiscard]] const QStringList& TimesalgSql() const { return FTimesalgQry.SQL; }

private:
    void clearCollection();
    void CollectSales();
    void PostSales();
    void UpdateTimesalg(QStringList& statements);
    void executeInBatches(const QStringList& statements);
    [[nodiscard]] QString postingOf(const TButikksalgItem& item) const;

    const TillVisit& visit_;
    db::Query FOrdreQry;
    db::Query FTimesalgQry;
    db::Query FqryGeneralTarget;
    std::vector<TButikksalgItem> ButikksalgCollection;
    QHash<std::pair<QString, int>, std::size_t> places_;  // item and status to its place in the collection
    int opId_ = -1;
    QString avdelingsnummer_;
    int FIk_Ku_Id = -1;
    int FileNameID = 0;
};

}  // namespace torvik
