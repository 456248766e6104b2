// See till_tables.h.
#include "outbound/driver/till_tables.h"

#include <QStringList>
#include <utility>

#include "engine/db/batched_reads.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "outbound/exports/send_steps.h"

namespace torvik {

namespace {

constexpr char kTillVersion[] = "select @@VERSION as version, in_dbversion from innstillinger";
constexpr char kTillTable[] = "select count(*) AS Antall from sysobjects where name='%1'";

// A till makes its tables as fast as it can; so do they wait who want them.
constexpr int kNoTimeout = 0;

QString tableQuestion(const char* table) {
    return QString::fromUtf8(kTillTable).arg(QString::fromUtf8(table));
}

int versionOf(const db::DataSet& answer) {
    return static_cast<int>(answer.FieldByName(QStringLiteral("in_dbversion")).AsInteger());
}

bool isThere(const db::DataSet& answer) {
    return !answer.IsEmpty() && answer.FieldByName(QStringLiteral("Antall")).AsInteger() > 0;
}

// The tables that some step asks the till for.
QList<const char*> askedFor() {
    QList<const char*> tables;
    for (const SendStep& step : sendSteps())
        for (const Action& action : *step.what)
            if (const auto* ask = std::get_if<AskForTable>(&action)) tables << ask->table;
    return tables;
}

}  // namespace

void TillTables::Forget() {
    has_.clear();
    tried_ = made_ = false;
    Shapes.Forget();
}

int TillTables::ReadVersion(db::Query& question, bool together) {
    const QString version = QString::fromUtf8(kTillVersion);
    if (together) {
        db::BatchedReads reads(*question.Connection());
        reads.CommandTimeout = question.CommandTimeout;
        reads.AddRead(version);
        for (const char* table : askedFor()) reads.AddRead(tableQuestion(table));
        try {
            reads.Send();
            reads.OpenNext(version);
            const int found = versionOf(reads);
            std::map<std::string, bool> has;
            for (const char* table : askedFor()) {
                reads.OpenNext(tableQuestion(table));
                has[table] = isThere(reads);
            }
            has_ = std::move(has);
            return found;
        } catch (const db::Error& e) {
            if (!db::isRefusalOutsideTransaction(e)) throw;
        }
    }
    question.Close();
    question.SQL = QStringList{version};
    question.Open();
    const int found = versionOf(question);
    question.Close();
    return found;
}

bool TillTables::TableExists(db::Session& till, const char* table) {
    if (const auto known = has_.find(table); known != has_.end()) return known->second;
    db::Query query(&till);
    query.ParamCheck = false;
    query.SQL = QStringList{tableQuestion(table)};
    query.Open();
    return has_[table] = isThere(query);
}

// Of the till's own tables only those are asked for that no step makes or changes.
bool TillTables::MakeAll(db::Session& till, const SendFacts& facts) {
    // Made once more they would be empty again.
    if (std::exchange(tried_, true)) return made_;
    QStringList batches;
    QStringList tables;
    for (const SendStep& step : sendSteps()) {
        if (!step.when.holds(facts)) continue;
        for (const Action& action : *step.what) {
            if (const auto* create = std::get_if<CreateTables>(&action)) {
                batches << createTablesSql(create->tables).split(QLatin1Char('\n'));
                for (const WorkTable* table : create->tables) tables << QString::fromUtf8(table->name);
            }
            if (const auto* load = std::get_if<LoadTable>(&action); load && load->tillsOwn)
                tables << QString::fromUtf8(load->table);
        }
    }
    try {
        Shapes.AskBehind(till, batches.join(QStringLiteral("\r\n")), tables, kNoTimeout);
        made_ = true;
    } catch (const db::Error& e) {
        if (!db::isRefusalOutsideTransaction(e)) throw;
    }
    return made_;
}

}  // namespace torvik
