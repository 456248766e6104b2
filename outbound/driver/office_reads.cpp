// See office_reads.h.
#include "outbound/driver/office_reads.h"

#include "engine/db/errors.h"
#include "outbound/exports/send_steps.h"

namespace torvik {

namespace {

// As a query sends it.
QString asSent(const QString& sql) {
    return sql.split(QLatin1Char('\n')).join(QStringLiteral("\r\n"));
}

// The group that an action reads with, and the text of its read.
struct ReadOf {
    const SendFacts& facts;
    ReadWith group = ReadWith::Nothing;
    QString sql;

    void operator()(const LoadTable& action) {
        group = action.readWith;
        sql = sqlOf(action.query, facts);
    }
    void operator()(const CopyRows& action) {
        group = action.readWith;
        sql = QString::fromUtf8(action.query);
    }
    void operator()(const EditOneRow& action) {
        group = action.readWith;
        sql = sqlOf(action.query, facts);
    }
    void operator()(const auto&) {}
};

std::unique_ptr<db::BatchedReads> readsOf(db::Session& office, ReadWith group, const SendFacts& facts) {
    auto reads = std::make_unique<db::BatchedReads>(office);
    for (const SendStep& step : sendSteps()) {
        if (!step.when.holds(facts)) continue;
        for (const Action& action : *step.what) {
            ReadOf read{facts};
            std::visit(read, action);
            if (read.group == group) reads->AddRead(asSent(read.sql));
        }
    }
    return reads;
}

}  // namespace

// A group is held from its first read on, so that nothing waits at the back office while the till is busy.
db::DataSet* OfficeReads::Open(db::Session& office, ReadWith group, const QString& sql, const SendFacts& facts,
                               int timeout) {
    if (group == ReadWith::Nothing) return nullptr;
    auto found = groups_.find(group);
    try {
        if (found == groups_.end()) {
            found = groups_.emplace(group, readsOf(office, group, facts)).first;
            found->second->CommandTimeout = timeout;
            found->second->Send();
            found->second->Hold();
        }
        if (!found->second || !found->second->IsNext(asSent(sql))) return nullptr;
        found->second->OpenNext(asSent(sql));
        return found->second.get();
    } catch (const db::Error& e) {
        found->second.reset();
        if (!db::isRefusalOutsideTransaction(e)) throw;
        return nullptr;
    }
}

}  // namespace torvik
