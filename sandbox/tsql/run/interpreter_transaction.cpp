// Transactions: the statements, the steps in the storage, and the clients' news of them.
#include <sqlite3.h>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_rows.h"
#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

namespace {

// The rows of table variables, which no roll-back takes away: read before it, written again after it.
class KeptVariables {
public:
    explicit KeptVariables(Connection& connection) : connection_(connection) {
        if (connection.interrupted()) return;  // nothing can be read, and the batch ends anyway
        for (const auto& scope : connection.temporaryScopes()) {
            for (const auto& object : connection.catalog(*scope)->all()) {
                if (object->name.starts_with('@')) read({object, scope});
            }
        }
    }

    void restore() {
        for (const Kept& kept : kept_) {
            // One that was made within the transaction has gone with it.
            if (connection_.catalog(*kept.table.database)->findById(kept.table.object->id) == nullptr) continue;
            Write write(connection_, *kept.table.database);
            connection_.run("DELETE FROM " + tableSql(kept.table));
            std::string places;
            for (std::size_t i = 0; i < kept.columns; ++i) places += (i == 0 ? "?" : ", ?") + std::to_string(i + 1);
            Statement insert = connection_.prepare("INSERT INTO " + tableSql(kept.table) + " VALUES (" + places + ")");
            for (std::size_t r = 0; r < kept.rows.size(); ++r) {
                for (std::size_t i = 0; i < kept.columns; ++i) {
                    kept.rows.row(r).bind(insert.get(), static_cast<int>(i) + 1, i);
                }
                insert.step();
                insert.reset();
            }
            write.done();
        }
    }

private:
    struct Kept {
        FoundObject table;
        std::size_t columns;
        RowBuffer rows;
    };

    void read(const FoundObject& table) {
        Statement all = connection_.prepare("SELECT * FROM " + tableSql(table));
        const auto columns = static_cast<std::size_t>(sqlite3_column_count(all.get()));
        Kept& kept = kept_.emplace_back(Kept{table, columns, RowBuffer(columns)});
        while (all.step()) kept.rows.add(all.get());
    }

    Connection& connection_;
    std::vector<Kept> kept_;
};

}  // namespace

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
        case TransactionStep::Rollback: {
            KeptVariables variables(connection);
            connection.rollback();
            variables.restore();
            session_.definitionsChanged();
            reply_->transactionRolledBack(session_.descriptor);
            break;
        }
        case TransactionStep::Save: connection.save(session_.transaction.savePoint()); break;
        case TransactionStep::RollbackToSave: {
            KeptVariables variables(connection);
            connection.rollbackTo(session_.transaction.savePoint());
            variables.restore();
            session_.definitionsChanged();
            break;
        }
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
    throw SqlError(errorMessage<3930>(), Effect::Batch);
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
    // An INSERT EXEC ends no transaction that it did not begin.
    if (session_.collecting && n.kind == ast::Transaction::Kind::Commit && state.count() <= *session_.collecting) {
        throw SqlError(errorMessage<3916>(), Effect::Batch);
    }
    if (session_.collecting && n.kind == ast::Transaction::Kind::Rollback && !state.isSave(name)) {
        throw SqlError(errorMessage<3915>(), Effect::Batch);
    }
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
        return SqlError(errorMessage<9002>(session_.database()), Effect::Batch);
    }
    // Expressions and joins that this server's storage cannot hold in one statement.
    constexpr std::string_view kLimits[] = {"parser stack overflow", "Expression tree is too large", "tables in a join",
                                            "too many terms in compound SELECT", "too many FROM clause terms"};
    for (const std::string_view limit : kLimits) {
        if (error.text.find(limit) == std::string::npos) continue;
        return SqlError(errorMessage<191>(), Effect::Batch);
    }
    return SqlError(errorMessage<8630>(error.text + ", SQLite " + std::to_string(error.code)), Effect::Batch);
}

}  // namespace sandbox
