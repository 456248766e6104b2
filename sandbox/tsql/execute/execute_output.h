// The rows of an OUTPUT clause: gathered while a statement changes its table, and given when it has. The interpreter
// makes one for a statement that has the clause and runs the statement with it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "sandbox/tsql/bind/bind_output.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

class RowOutput {
public:
    using Send = std::function<void(const BoundQuery& query, std::span<const std::vector<Typed>> rows)>;

    // send: takes the rows where they are for the client.
    RowOutput(const ExecuteContext& context, const ResolvedObject& target,
              const std::shared_ptr<const BoundOutput>& output, Send send);

    void removed(std::int64_t rowId);  // before the row is changed or deleted
    void written(std::int64_t rowId);  // once it has been; in an UPDATE, in the order of removed()
    void finish();                     // the rows go where the clause says

private:
    [[nodiscard]] std::vector<Typed> read(std::int64_t rowId);

    const ExecuteContext& context_;
    std::shared_ptr<const BoundOutput> output_;
    Send send_;
    std::vector<Type> types_;                // of the stored columns
    Statement row_;                          // the stored columns of one row
    std::vector<std::vector<Typed>> input_;  // of the query, by row
    std::size_t next_ = 0;                   // of input_: the row that written() speaks of
};

// The statements of execute.h with an OUTPUT clause; output may be null.
[[nodiscard]] std::int64_t executeInsert(const ExecuteContext& context, const BoundInsert& insert, RowOutput* output);
[[nodiscard]] std::int64_t executeUpdate(const ExecuteContext& context, const BoundUpdate& update, RowOutput* output);
[[nodiscard]] std::int64_t executeDelete(const ExecuteContext& context, const BoundDelete& deletion, RowOutput* output);

}  // namespace sandbox
