#include "fleet/objects/staged_file.h"

#include <QFile>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/statement_text.h"

namespace torvik {

namespace {

// Large enough that round trips do not count, small enough that the client library's copies of it do not either.
constexpr qint64 kPiece = qint64{4} << 20;
constexpr int kPieceTimeout = 600;  // seconds: lines to tills can be slow

constexpr char kMakeTable[] = R"(IF OBJECT_ID('tempdb..#FIL') IS NOT NULL DROP TABLE #FIL
CREATE TABLE #FIL (NR int NOT NULL PRIMARY KEY, DEL varbinary(max) NOT NULL))";

constexpr char kAddPiece[] = "INSERT INTO #FIL (NR, DEL) VALUES (:Nr, :Del)";

// The pieces from first to last joined in pairs of pairs, so that each byte is copied as often as there are levels, not
// as often as there are pieces.
QString joined(int first, int last) {
    if (first == last) return QStringLiteral("(SELECT DEL FROM #FIL WHERE NR=%1)").arg(first);
    const int middle = first + (last - first) / 2;
    return u'(' + joined(first, middle) + QStringLiteral(" + ") + joined(middle + 1, last) + u')';
}

}  // namespace

StagedFile::StagedFile(db::Session& session) : session_(session) {
    db::Query make(&session_);
    make.ParamCheck = false;
    make.SQL = statementLines(kMakeTable);
    make.ExecSQL();
}

void StagedFile::load(const QString& name, const std::function<void()>& between) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Klarte ikke å lese %1: %2").arg(name, file.errorString()));
    const qint64 size = file.size();
    qint64 sent = 0;
    QByteArray piece;
    while (sent < size) {
        piece.resize(std::min(kPiece, size - sent));
        const qint64 got = file.read(piece.data(), piece.size());
        if (got <= 0) break;
        piece.resize(got);
        send(piece);
        sent += got;
        between();
    }
    if (sent != size || file.size() != size)
        throw EngineError(QStringLiteral("Filen %1 ble endret mens den ble lest").arg(name));
}

void StagedFile::send(const QByteArray& piece) {
    db::Query add(&session_);
    add.CommandTimeout = kPieceTimeout;
    add.SQL = statementLines(kAddPiece);
    add.ParamByName(QStringLiteral("Nr")) = ++pieces_;
    add.ParamByName(QStringLiteral("Del")) = piece;
    add.ExecSQL();
}

QString StagedFile::expression() const {
    return pieces_ == 0 ? QStringLiteral("0x") : joined(1, pieces_);
}

}  // namespace torvik
