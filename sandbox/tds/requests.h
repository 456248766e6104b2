// What a client asks for: a batch, procedure calls, a transaction's steps ([MS-TDS] 2.2.6.6 to 2.2.6.9), read from the
// body of a whole message.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tds/bytes.h"
#include "sandbox/tds/protocol.h"

namespace sandbox::tds {

// The text of a SQL_BATCH message. Raises StreamError or Truncated.
[[nodiscard]] std::string readBatch(ByteSpan message, Version version);

// The procedures that a call may name by number.
enum class ProcId : std::uint16_t {
    Cursor = 1,
    CursorOpen = 2,
    CursorPrepare = 3,
    CursorExecute = 4,
    CursorPrepExec = 5,
    CursorUnprepare = 6,
    CursorFetch = 7,
    CursorOption = 8,
    CursorClose = 9,
    ExecuteSql = 10,
    Prepare = 11,
    Execute = 12,
    PrepExec = 13,
    PrepExecRpc = 14,
    Unprepare = 15,
};

struct CallParameter {
    std::string name;  // with its "@"; empty: by place
    Typed value;
    bool output = false;
    bool useDefault = false;
};

struct Call {
    std::string procedure;  // empty: by number
    std::optional<ProcId> id;
    bool noMetadata = false;
    std::vector<CallParameter> parameters;
};

// A parameter that cannot be taken (8009, 8023); the message is well-formed as far as it could be read.
class RefusedParameter : public std::runtime_error {
public:
    explicit RefusedParameter(Message refusal) : std::runtime_error(refusal.text), message(std::move(refusal)) {}
    Message message;
};

// All calls of one RPC message. Raises StreamError, Truncated or RefusedParameter.
[[nodiscard]] std::vector<Call> readCalls(ByteSpan message, Version version);

enum class TransactionStep : std::uint16_t {
    GetDtcAddress = 0,
    Propagate = 1,
    Begin = 5,
    Promote = 6,
    Commit = 7,
    Rollback = 8,
    Save = 9,
};

struct TransactionRequest {
    TransactionStep step{};
    std::string name;
    std::uint8_t isolation = 0;  // 0: as it is; else 1 (read uncommitted) to 5 (snapshot)
    bool beginAnother = false;   // commit and rollback: a new transaction follows, of that isolation
};

[[nodiscard]] TransactionRequest readTransaction(ByteSpan message);
// As T-SQL would write it.
[[nodiscard]] std::string textOf(const TransactionRequest& request);

}  // namespace sandbox::tds
