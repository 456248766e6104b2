// OUTPUT: what an INSERT, UPDATE or DELETE gives of each row that it touches. Bound by bind_insert.cpp and
// bind_change.cpp, carried out by execute_output.cpp.
#pragma once

#include <memory>
#include <optional>

#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

struct BoundOutput {
    // One row for each row that was touched. Its input: the stored columns of "inserted", then those of "deleted".
    BoundQuery query;
    std::optional<BoundInsert> into;  // OUTPUT ... INTO; none: the rows go to the client
};

// Which of the two tables there are in a statement.
struct OutputTables {
    bool inserted = false;
    bool deleted = false;
};

[[nodiscard]] std::shared_ptr<const BoundOutput> bindOutput(const BindContext& context, const ast::Output& output,
                                                            const ResolvedObject& target, OutputTables tables);

}  // namespace sandbox
