// How one table's rows get from a till into its staging table: the source query, the staging table, and the columns, as
// a table of data that the generic transfer (table_transfer.h) executes. One constant a map, in the ..._maps.cpp file
// of its entity; transfer_steps.cpp tells their order.
#pragma once

#include <span>

namespace torvik {

// Where a staged value comes from.
struct From {
    enum class Kind {
        Column,       // the source column `text`, as it stands: a null stays a null
        IkKuId,       // the department's customer id
        KasseNr,      // the till number
        UnId,         // the run identifier
        Now,          // the local clock's time at the row
        Number,       // `number`
        Text,         // `text`
        StockCount,   // Or_Varetelling; where that is missing or null, whether the settlement is a stock count
        DisplayItem,  // ol_visningsvare; null counts as false
    };
    constexpr From(const char* column) : kind(Kind::Column), text(column) {}
    constexpr explicit From(Kind what, const char* constant = "", int value = 0)
        : kind(what), text(constant), number(value) {}

    Kind kind;
    const char* text;
    int number = 0;
};

inline constexpr From kRunIkKuId{From::Kind::IkKuId};
inline constexpr From kRunKasseNr{From::Kind::KasseNr};
inline constexpr From kRunUnId{From::Kind::UnId};
inline constexpr From kNow{From::Kind::Now};
inline constexpr From kStockCount{From::Kind::StockCount};
inline constexpr From kDisplayItem{From::Kind::DisplayItem};
constexpr From fixed(int value) {
    return From(From::Kind::Number, "", value);
}
constexpr From fixed(const char* value) {
    return From(From::Kind::Text, value);
}

// When a column is written at all; otherwise it stays at the staging table's default.
enum class When {
    Always,
    SourceHas,     // the till's table has the column
    TargetHas,     // the staging table has it
    BothHave,      // both have it
    TillAbove149,  // the till's version is above 149
    TillFrom194,   // the till's version is 194 or higher
};

struct ColumnRule {
    From from;
    const char* target;
    When when = When::Always;
};

struct TableMap {
    const char* step;         // its name in progress and failure texts
    const char* component;    // the name of the staging table object
    const char* target;       // the staging table
    const char* source;       // "%d" is the first settlement id, "%s" a list of texts that the step tells
    const char* rowProgress;  // the word of the row progress; none: the step reports none
    std::span<const ColumnRule> columns;
    int fromVersion = 0;                   // the lowest till version that has the table; 0: all
    const char* requiredTable = nullptr;   // the step runs only where the till has this table
    const char* openedEvent = nullptr;     // debug event once the source is open: row count, department, till
    const char* releasedSource = nullptr;  // the source where the department fetches released time entries only
    bool closesSource = false;             // the source query is closed at the end of the step
    bool streams = false;                  // rows of any size: read one after the other, and never held together
};

// Settlements and sales.
extern const TableMap kOppgjorMap;
extern const TableMap kOppgjorlinjeMap;
extern const TableMap kOppgjorBetalingMap;
extern const TableMap kOrdreMap;
extern const TableMap kOrdrelinjeMap;
extern const TableMap kOrdregrunnMap;
extern const TableMap kOrdrelinjegrunnMap;
extern const TableMap kOrdrelinjetekstMap;
extern const TableMap kOrdrereturMap;
extern const TableMap kKupongMap;
extern const TableMap kKupongOrdrelinjeMap;
extern const TableMap kBetalingMap;
extern const TableMap kBetalingBankinfoMap;
extern const TableMap kVippsBetalingMap;
extern const TableMap kUtbetalingImportMap;
extern const TableMap kSignaturMap;
extern const TableMap kBetalingSignaturMap;
extern const TableMap kOrdreSignaturMap;
extern const TableMap kOppgjorSignaturMap;
extern const TableMap kVedleggMap;

// Registers, staff and goods.
extern const TableMap kLoggtypeMap;
extern const TableMap kGrunnTypeMap;
extern const TableMap kGrunnMap;
extern const TableMap kPengeenhetMap;
extern const TableMap kBetalingformMap;
extern const TableMap kKortutstederMap;
extern const TableMap kAnsattMap;
extern const TableMap kEkstraAnsattOppgjorMap;
extern const TableMap kLoggMap;
extern const TableMap kTimerMap;
extern const TableMap kTimerPrKodeMap;
extern const TableMap kVaremottakMap;
extern const TableMap kVaremottaklinjeMap;
extern const TableMap kVarebestillingMap;
extern const TableMap kVarebestillinglinjeMap;

// All of them, in the order of their steps.
[[nodiscard]] std::span<const TableMap* const> allTableMaps();

}  // namespace torvik
