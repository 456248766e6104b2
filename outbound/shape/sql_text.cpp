#include "outbound/shape/sql_text.h"

#include <QStringList>
#include <algorithm>
#include <stdexcept>

namespace torvik {

namespace {

QString valueOf(Arg arg, const SendFacts& facts) {
    const auto quoted = [](QString text) { return text.replace(QLatin1Char('\''), QStringLiteral("''")); };
    switch (arg) {
        case Arg::None: break;
        case Arg::Ik_Ku_ID: return QString::number(facts.Ik_Ku_ID);
        case Arg::KasseNr: return quoted(facts.KasseNr);
        case Arg::SessionID: return quoted(facts.SessionID);
        case Arg::DagerSidenEndring: return QString::number(facts.DagerSidenEndring);
        case Arg::ReplaceItemNumber: return quoted(facts.ReplaceItemNumber);
    }
    return {};
}

QString filled(const Piece& piece, const SendFacts& facts) {
    const QString sql = QString::fromUtf8(piece.sql);
    QString text;
    qsizetype from = 0;
    for (const Arg arg : piece.args) {
        if (arg == Arg::None) break;
        const qsizetype s = sql.indexOf(QStringLiteral("%s"), from);
        const qsizetype d = sql.indexOf(QStringLiteral("%d"), from);
        const qsizetype at = s < 0 ? d : d < 0 ? s : std::min(s, d);
        if (at < 0) throw std::logic_error("A piece of SQL has fewer place holders than arguments");
        text += sql.mid(from, at - from) + valueOf(arg, facts);
        from = at + 2;
    }
    const QString rest = sql.mid(from);
    if (rest.contains(QStringLiteral("%s")) || rest.contains(QStringLiteral("%d")))
        throw std::logic_error("A piece of SQL has more place holders than arguments");
    return text + rest;
}

}  // namespace

QString sqlOf(SqlText text, const SendFacts& facts) {
    QStringList pieces;
    for (const Piece& piece : text)
        if (piece.when.holds(facts)) pieces << filled(piece, facts);
    return pieces.join(QLatin1Char('\n'));
}

}  // namespace torvik
