// Transactions: the statements, the steps in the storage, and the clients' news of them.
#include <sqlite3.h>

#include "sandbox/store/convert.h"
#include "sandbox/tsql/interpreter.h"

namespace sandbox {

void Interpreter::carryOut(TransactionStep step) {
    Connection& connection = *session_.connection;
    switch (step) {
        case TransactionStep::None: break;
        case TransactionStep::Begin:
            connection.begin();
            session_.descriptor = ++session_.shared.lastDescriptor;
            reply_->transactionBegan(session_.descriptor);
            break;
        case TransactionStep::Commit: try { connection.commit();
            } catch (const SqliteError& e) {
                reply_->transactionRolledBack(session_.descriptor);
                session_.tellProcess();
                throw ofSqlite(e);
            }
            reply_->transactionCommitted(session_.descriptor);
            break;
        case TransactionStep::Rollback:
            connection.rollback();
            session_.definitionsChanged();
            reply_->transactionRolledBack(session_.descriptor);
            break;
        case TransactionStep::Save: connection.save(session_.transaction.savePoint()); break;
        case TransactionStep::RollbackToSave:
            connection.rollbackTo(session_.transaction.savePoint());
            session_.definitionsChanged();
            break;
    }
    session_.tellProcess();
}

void Interpreter::rollBackAll() {
    if (!session_.transaction.open()) return;
    session_.transaction.ended();
    carryOut(TransactionStep::Rollback);
}

void Interpreter::beginImplicitly() {
    if (session_.settings.implicitTransactions && !session_.transaction.open())
        carryOut(session_.transaction.begin({}));
}

void Interpreter::requireWritable() {
    if (!session_.transaction.doomed()) return;
    throw SqlError(Message{.number = 3930,
                           .severity = 16,
                           .state = 1,
                           .text = "The current transaction cannot be committed and cannot support operations that "
                                   "write to the log file. Roll back the transaction."},
                   Effect::Batch);
}

void Interpreter::runTransaction(const ast::Transaction& n) {
    std::string name = n.name;
    if (!n.variable.empty()) {
        const auto slot = frame().unit->findVariable(n.variable, frame().unit->variables.size());
        const auto at = static_cast<std::size_t>(*slot);
        const Value& value = frame().variables.at(at);
        if (!isNull(value)) name = displayText(value, frame().unit->variables.at(at).type);
    }
    TransactionState& state = session_.transaction;
    switch (n.kind) {
        case ast::Transaction::Kind::Begin: carryOut(state.begin(name)); break;
        case ast::Transaction::Kind::Commit: carryOut(state.commit()); break;
        case ast::Transaction::Kind::Rollback: carryOut(state.rollback(name)); break;
        case ast::Transaction::Kind::Save: carryOut(state.save(name)); break;
    }
    succeed(0);
    done(std::nullopt);
}

SqlError Interpreter::ofSqlite(const SqliteError& error) {
    if ((error.code & 0xFF) == SQLITE_FULL) {
        return SqlError(
            Message{.number = 9002,
                    .severity = 17,
                    .state = 2,
                    .text = "The transaction log for database '" + session_.database() + "' is full due to 'NOTHING'."},
            Effect::Batch);
    }
    return SqlError(Message{.number = 8630,
                            .severity = 17,
                            .state = 1,
                            .text = "Internal Query Processor Error: The query processor encountered an unexpected "
                                    "error during execution (" +
                                    error.text + ", SQLite " + std::to_string(error.code) + ")."},
                    Effect::Batch);
}

}  // namespace sandbox
