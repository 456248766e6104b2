// INSERT BULK: one statement that lasts as long as its rows keep coming.
#include "sandbox/tsql/execute/execute_insert.h"

namespace sandbox {

struct BulkInsert::State {
    State(const ExecuteContext& given, BoundInsert bound, Options options)
        : context(given),
          insert(std::move(bound)),
          table(writeTarget(context, insert.target)),
          write(context.connection, *table.database),
          inserter(context, table, insert,
                   {.checkConstraints = options.checkConstraints, .defaultsForNulls = !options.keepNulls}),
          source(context.connection.prepare(insert.source.sql)) {
        requireUnchanged(context, table);
    }

    const ExecuteContext& context;
    BoundInsert insert;
    FoundObject table;
    Write write;
    RowInserter inserter;
    Statement source;
};

BulkInsert::BulkInsert(const ExecuteContext& context, BoundInsert insert, Options options)
    : state_(std::make_unique<State>(context, std::move(insert), options)) {}

BulkInsert::~BulkInsert() = default;

void BulkInsert::row(std::span<const Typed> cells) {
    state_->context.bindParameters(state_->source, state_->insert.source, cells);
    while (state_->source.step()) state_->inserter.add(StatementRow(state_->source.get()));
    state_->source.reset();
}

std::int64_t BulkInsert::finish() {
    const std::int64_t count = state_->inserter.finish();
    state_->write.done();
    return count;
}

}  // namespace sandbox
