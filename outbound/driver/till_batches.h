// The batches that a send has for the till, each a request; and those short statements that may wait for the next one,
// so that several go in one round trip: drops of work tables, and procedures that are installed. docs/sending.md tells
// why that is safe. Used by TdmTorvikToPOS.
#pragma once

#include <QString>
#include <QStringList>

#include "engine/db/script.h"

namespace torvik {

struct Procedure;
struct SendFacts;

class TillBatches {
public:
    TillBatches();

    // Off: nothing waits, each statement is a request.
    bool Together = true;
    void SetConnection(db::Session* till) { script_.SetConnection(till); }

    // Sends what waits, and then the batch.
    void Send(const QString& batch);
    // Drops a work table if it is there.
    void Drop(const char* table);
    // Drops a procedure if it is there, and makes it anew.
    void Install(const Procedure& procedure, const SendFacts& facts);
    // Runs what was installed last. Where nothing else waits, both go in one request.
    void Run(const Procedure& procedure, const SendFacts& facts);
    // In one request, of which nothing is done behind a statement that fails.
    void SendWaiting();
    // What waits is not done.
    void Forget() { waiting_.clear(); }

private:
    void request(const QString& batch);

    db::Script script_;
    QStringList waiting_;  // statements, each of which sets @@ERROR
};

}  // namespace torvik
