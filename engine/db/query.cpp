// See query.h.
#include "engine/db/query.h"

#include <algorithm>

#include "engine/db/connection.h"
#include "engine/db/edit_target.h"
#include "engine/db/errors.h"
#include "engine/db/reply.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

// The rows of a unidirectional query that are held at a time, at least.
constexpr qsizetype kForwardRows = 500;

}  // namespace

Query::Query(Session* session, QObject* parent) : DataSet(parent), session_(session) {}

Query::~Query() {
    endReading();
}

void Query::SetConnection(Session* session) {
    if (session == session_) return;
    if (Active()) throw UsageError(QStringLiteral("The connection cannot be changed while the query is open"));
    session_ = session;
}

Session& Query::session() const {
    if (!session_) throw UsageError(QStringLiteral("The query has no connection"));
    return *session_;
}

void Query::scan() {
    const QString text = SQL.join(QStringLiteral("\r\n"));
    if (!ParamCheck) {
        scanned_ = QString();
        text_ = {text, {}};
        params_.Reset({});
        return;
    }
    if (text == scanned_ && !scanned_.isNull()) return;
    scanned_ = text;
    text_ = scanParameters(text);
    params_.Reset(text_.Names);
}

const Parameters& Query::Params() {
    scan();
    return params_;
}

Parameter& Query::ParamByName(const QString& name) {
    scan();
    return params_.ByName(name);
}

Request Query::request() {
    scan();
    if (text_.Text.trimmed().isEmpty()) throw UsageError(QStringLiteral("The query has no text"));
    return requestOf(text_);
}

Request Query::requestOf(const ScannedText& text) const {
    Request request{text.Text, {}, CommandTimeout, true};
    for (const QString& name : text.Names) {
        const Parameter& parameter = params_.ByName(name);
        std::optional<FieldInfo> type;
        if (parameter.Type()) {
            type.emplace();
            type->Type = *parameter.Type();
            type->Legacy = *parameter.Type() == FieldType::DateTime;
        }
        request.Arguments.push_back({parameter.AsValue(), type});
    }
    return request;
}

// The number of rows, and then the rows.
Request Query::countedRequest() {
    scan();
    const QString text = SQL.join(QStringLiteral("\r\n"));
    const QString both = countingText(text) + QStringLiteral("\r\n") + text;
    return requestOf(ParamCheck ? scanParameters(both) : ScannedText{both, {}});
}

void Query::Open() {
    if (Active() && SQL == opened_) return;
    Close();
    opened_ = SQL;
    const bool counts = UniDirectional && CountRows;
    auto reply = std::make_unique<Reply>(session().use(this), counts ? countedRequest() : request());
    int count = -1;
    if (counts && reply->hasRows()) {
        count = int(reply->takeRowSet().value(0, 0).toInt());
        reply->raiseErrors();
    }
    if (!reply->hasRows()) {
        throw StatementError(QStringLiteral("The statement did not return rows"), text_.Text);
    }
    activate(reply->columns());
    try {
        if (UniDirectional) {
            reading_ = std::move(reply);
            expectRows(count);
            session().add(this);
        } else {
            while (reply->fetch(rows())) {
            }
            reply->finish();
        }
        First();
    } catch (...) {
        endReading();
        DataSet::Close();
        throw;
    }
}

void Query::Close() {
    endReading();
    deferred_ = nullptr;
    target_.reset();
    DataSet::Close();
}

void Query::ExecSQL() {
    Close();
    rowsAffected_ = -1;
    rowsAffected_ = session().use(this).run(request());
}

void Query::endReading() {
    reading_.reset();
    expectRows(-1);
    if (session_) session_->remove(this);
}

// Rows with a text or bytes of any length are read one by one.
bool Query::readOn() {
    if (reading_) {
        const qsizetype most = std::ranges::any_of(reading_->columns(), &FieldInfo::Long) ? 1 : kForwardRows;
        if (rows().rowCount() >= most) dropRows();
        const qsizetype before = rows().rowCount();
        try {
            while (rows().rowCount() - before < most && reading_->fetch(rows())) {
            }
            if (rows().rowCount() > before) return true;
            reading_->finish();
        } catch (...) {
            endReading();
            throw;
        }
        endReading();
    }
    if (deferred_) std::rethrow_exception(std::exchange(deferred_, nullptr));
    return false;
}

// An error belongs to who walks the rows, not to who needed the session meanwhile.
void Query::finishWork() {
    if (!reading_) return;
    try {
        while (reading_->fetch(rows())) {
        }
        reading_->finish();
    } catch (const Error&) {
        deferred_ = std::current_exception();
    }
    rowsChanged();
    endReading();
}

// The rest is of no use to a transaction that goes, and may be a till's whole table.
void Query::rolledBack() {
    if (!reading_) return;
    endReading();
    deferred_ = std::make_exception_ptr(
        StatementError(QStringLiteral("The transaction was rolled back before all rows were read")));
}

void Query::connectionGone() noexcept {
    if (!reading_) return;
    reading_.reset();
    deferred_ = std::make_exception_ptr(ConnectionError(
        ConnectionError::Reason::Lost, QStringLiteral("The session was closed before all rows were read")));
}

const EditTarget& Query::target() {
    if (CursorType == ReadMode::Static) throw UsageError(QStringLiteral("The rows of a static query cannot be edited"));
    if (!target_) {
        std::vector<FieldInfo> columns;
        for (int i = 0; i < FieldCount(); ++i) columns.push_back(Fields(i).Info());
        target_ = std::make_unique<EditTarget>(session().use(this), text_.Text, columns, CommandTimeout);
    }
    return *target_;
}

std::vector<Value> Query::currentValues() const {
    std::vector<Value> values;
    for (int i = 0; i < FieldCount(); ++i) values.push_back(rows().value(row(), i));
    return values;
}

void Query::Edit() {
    requireActive();
    static_cast<void>(target());
    DataSet::Edit();
}

void Query::Append() {
    requireActive();
    static_cast<void>(target());
    DataSet::Append();
}

void Query::Delete() {
    requireActive();
    if (State() != Mode::Append && !IsEmpty()) target().erase(session().use(this), currentValues(), CommandTimeout);
    DataSet::Delete();
}

void Query::store(Mode mode, EditBuffer& buffer) {
    const EditTarget& table = target();
    auto& connection = session().use(this);
    if (mode == Mode::Append)
        table.insert(connection, buffer.Values, buffer.Set, CommandTimeout);
    else
        table.update(connection, currentValues(), buffer.Values, buffer.Set, CommandTimeout);
}

}  // namespace torvik::db
