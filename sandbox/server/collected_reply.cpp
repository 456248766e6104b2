// Replies that keep something back.
#include "sandbox/server/collected_reply.h"

#include "sandbox/store/values/error_table.h"

namespace sandbox::server {

void CallReply::columns(std::span<const ResultColumn> columns) {
    release();
    to_.columns(columns);
}

void CallReply::row(std::span<const Value> cells) {
    to_.row(cells);
}

void CallReply::statementDone(std::optional<std::int64_t> count, bool) {
    release();
    to_.statementDone(count, true);
}

void CallReply::error(const Message& message) {
    release();
    failed_ = true;
    to_.error(message);
}

void CallReply::info(const Message& message) {
    release();
    to_.info(message);
}

void CallReply::returnStatus(std::int32_t status) {
    release();
    status_ = status;
}

void CallReply::outputParameter(int ordinal, const std::string& name, const Typed& value) {
    outputs_.push_back({ordinal, name, value});
}

void CallReply::procedureDone() {
    ended_ = true;
}

void CallReply::finish(const std::vector<Output>& first, int shift) {
    to_.returnStatus(status_.value_or(0));
    for (const Output& o : first) to_.outputParameter(o.ordinal, o.name, o.value);
    for (const Output& o : outputs_) to_.outputParameter(o.ordinal + shift, o.name, o.value);
    to_.procedureDone();
}

void CallReply::release() {
    if (!ended_) return;
    if (status_) to_.returnStatus(*status_);
    for (const Output& o : outputs_) to_.outputParameter(o.ordinal, o.name, o.value);
    to_.statementDone(std::nullopt, true);
    status_.reset();
    outputs_.clear();
    ended_ = false;
}

void RowSetReply::columns(std::span<const ResultColumn> columns) {
    if (++rowSets > held_ && fallBack_ && !direct) goDirect();
    if (direct) return to_.columns(columns);
    if (rowSets == 1) heads.assign(columns.begin(), columns.end());
}

void RowSetReply::goDirect() {
    direct = true;
    to_.info(errorMessage<16954>().atLine(1));
    if (rowSets < 2) return;  // nothing is held yet
    to_.columns(heads);
    for (const std::vector<Value>& cells : rows) to_.row(cells);
    to_.statementDone(static_cast<std::int64_t>(rows.size()), true);
}

void RowSetReply::row(std::span<const Value> cells) {
    if (direct) return to_.row(cells);
    if (rowSets == 1) rows.emplace_back(cells.begin(), cells.end());
}

void RowSetReply::statementDone(std::optional<std::int64_t> count, bool) {
    if (rowSets == 0 || direct) to_.statementDone(count, true);
}

void RowSetReply::error(const Message& message) {
    failed = true;
    to_.error(message);
}

}  // namespace sandbox::server
