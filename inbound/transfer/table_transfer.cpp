// The one generic shape of a table transfer. Columns are looked up once, before the first row: which rules hold cannot
// change from row to row.
#include "inbound/transfer/table_transfer.h"

#include <vector>

#include "engine/db/data_set.h"
#include "engine/db/table.h"

namespace torvik {

namespace {

const QString kStockCountType = QStringLiteral("VARETELLING");

bool holds(const ColumnRule& rule, int tillVersion, const db::DataSet& source, const db::Table& staging) {
    const auto sourceHas = [&] { return source.FindField(QString::fromUtf8(rule.from.text)) != nullptr; };
    const auto targetHas = [&] { return staging.FindField(QString::fromUtf8(rule.target)) != nullptr; };
    switch (rule.when) {
        case When::Always: return true;
        case When::SourceHas: return sourceHas();
        case When::TargetHas: return targetHas();
        case When::BothHave: return sourceHas() && targetHas();
        case When::TillAbove149: return tillVersion > 149;
        case When::TillFrom194: return tillVersion >= 194;
    }
    return false;
}

// A rule with its columns found.
struct BoundRule {
    const ColumnRule* rule;
    const db::Field* source;  // none where the value is no source column
    db::Field* target;
};

std::vector<BoundRule> bindRules(const TableMap& map, int tillVersion, db::DataSet& source, db::Table& staging) {
    std::vector<BoundRule> bound;
    for (const ColumnRule& rule : map.columns) {
        if (!holds(rule, tillVersion, source, staging)) continue;
        const db::Field* column = nullptr;
        switch (rule.from.kind) {
            case From::Kind::Column: column = &source.FieldByName(QString::fromUtf8(rule.from.text)); break;
            case From::Kind::StockCount: column = source.FindField(QStringLiteral("Or_Varetelling")); break;
            case From::Kind::DisplayItem: column = &source.FieldByName(QStringLiteral("ol_visningsvare")); break;
            default: break;
        }
        bound.push_back({&rule, column, &staging.FieldByName(QString::fromUtf8(rule.target))});
    }
    return bound;
}

db::Value isStockCount(const BoundRule& rule, db::DataSet& source) {
    if (rule.source && !rule.source->IsNull()) return rule.source->AsValue();
    return source.text("op_type") == kStockCountType;
}

db::Value valueOf(const BoundRule& bound, const TransferRun& run, db::DataSet& source) {
    const From& from = bound.rule->from;
    switch (from.kind) {
        case From::Kind::Column: return bound.source->AsValue();
        case From::Kind::IkKuId: return run.Ik_Ku_ID;
        case From::Kind::KasseNr: return run.KasseNr;
        case From::Kind::UnId: return run.UnID;
        case From::Kind::Now: return run.now();
        case From::Kind::Number: return from.number;
        case From::Kind::Text: return QString::fromUtf8(from.text);
        case From::Kind::StockCount: return isStockCount(bound, source);
        case From::Kind::DisplayItem: return bound.source->AsBoolean();
    }
    return {};
}

void copyRows(const TableMap& map, const TransferRun& run, db::DataSet& source, db::Table& staging,
              const RowProgress& progress) {
    std::vector<BoundRule> rules;
    for (source.First(); !source.Eof(); source.Next()) {
        if (map.rowProgress) progress(source.RecNo(), source.RecordCount());
        if (rules.empty()) rules = bindRules(map, run.tillVersion, source, staging);
        staging.Append();
        for (const BoundRule& rule : rules) rule.target->SetValue(valueOf(rule, run, source));
        staging.Post();
    }
}

}  // namespace

void transferTable(const TableMap& map, const TransferRun& run, db::DataSet& source, db::Table& staging,
                   StagingOpens opens, const RowProgress& progress) {
    if (opens == StagingOpens::ForRows && source.Eof()) return;
    staging.Close();
    staging.SetTableName(QString::fromUtf8(map.target));
    staging.Open();
    try {
        copyRows(map, run, source, staging, progress);
    } catch (...) {
        staging.Discard();
        staging.Close();
        throw;
    }
    staging.Close();
}

}  // namespace torvik
