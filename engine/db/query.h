// A statement bound to a session: its text, parameters, time-out, and, when opened, its rows, read to the end and held
// on the client, so that any number of queries can be open on one session.
#pragma once

#include <QPointer>
#include <QStringList>
#include <exception>

#include "engine/db/data_set.h"
#include "engine/db/parameters.h"
#include "engine/db/session.h"

namespace torvik::db {

class EditTarget;
class Reply;
struct Request;

// How a query reads: KeySet and BaseTable rows can be edited.
enum class ReadMode { Static, KeySet, BaseTable };

class Query : public DataSet, private Unfinished {
public:
    explicit Query(Session* session = nullptr, QObject* parent = nullptr);
    ~Query() override;

    // The text's lines, free to change; sent joined, as one batch.
    QStringList SQL;
    // Seconds; 0 waits for ever. The statement is cancelled on the server and TimeoutError raised.
    int CommandTimeout = 30;
    // KeySet and BaseTable rows of one table can be edited (Edit, Append, Delete); Static ones raise UsageError.
    ReadMode CursorType = ReadMode::Static;
    // Off: the text goes as it stands and has no parameters.
    bool ParamCheck = true;
    // On: Open reads only as the rows are walked (First once, Next, Eof); RecordCount counts the rows read so far. Any
    // other use of the session reads the rest to the client first, but for Rollback and Session::Close, which drop it:
    // the walk then ends with an exception. An error behind the rows is raised where met.
    bool UniDirectional = false;
    // With UniDirectional: Open first asks the server, in the same round trip, how many rows there will be, so that
    // RecordCount tells it from the start. The text must then be one SELECT whose columns have names of their own.
    bool CountRows = false;

    // May be changed only while closed, else UsageError.
    void SetConnection(Session* session);
    [[nodiscard]] Session* Connection() const { return session_; }

    // The parameter of the present text; raises UsageError "Parameter 'X' not found". Values stay while the text keeps
    // the name.
    [[nodiscard]] Parameter& ParamByName(const QString& name);
    [[nodiscard]] const Parameters& Params();

    // Runs the batch and holds the rows of its first row set. An error before, in or after it is raised, as is a batch
    // without a row set. Opening an open query does nothing, unless its text has changed: then it is closed first.
    void Open();
    void Close() override;
    // Runs the batch to its end; rows are read past. The first error is raised though earlier statements succeeded.
    void ExecSQL();
    // Whether RecordCount counts rows that are still to be read too, or there are none.
    [[nodiscard]] bool RowCountKnown() const { return !reading_ || rowsExpected(); }
    // Rows that the last ExecSQL changed, all statements added up; -1 when none counted.
    [[nodiscard]] qint64 RowsAffected() const { return rowsAffected_; }

    void Edit() override;
    void Append() override;
    void Delete() override;

protected:
    void store(Mode mode, EditBuffer& buffer) override;
    bool readOn() override;

private:
    [[nodiscard]] const EditTarget& target();
    [[nodiscard]] std::vector<Value> currentValues() const;
    [[nodiscard]] Request request();
    [[nodiscard]] Request requestOf(const ScannedText& text) const;
    [[nodiscard]] Request countedRequest();
    [[nodiscard]] Session& session() const;
    void scan();
    void endReading();
    void finishWork() override;
    void releaseConnection() override { finishWork(); }
    void dropUnread() noexcept override { connectionGone(); }
    void rolledBack() override;
    void connectionGone() noexcept override;

    QPointer<Session> session_;
    QStringList opened_;  // the text that the rows are of
    Parameters params_;
    QString scanned_;  // the text that params_ and text_ are of
    ScannedText text_;
    qint64 rowsAffected_ = -1;
    std::unique_ptr<Reply> reading_;  // a unidirectional query's reply, until it is read
    std::exception_ptr deferred_;     // an error met while another use of the session made this query read on
    std::unique_ptr<EditTarget> target_;
};

}  // namespace torvik::db
