// The send that anybody would script first: freebcp out of the back office and into the till's work tables, and the
// program's own statements by tsql. What a send is compared with. Of the small registers only those are copied that
// items, prices and customers need; the statements of all run.
#pragma once

#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <stdexcept>

#include "outbound/exports/send_steps.h"

namespace torvik::bench {

struct PlainServer {
    QString address;  // "host,port"
    QString database;
    QString user;
    QString password;
};

class PlainSend {
public:
    PlainSend(PlainServer office, PlainServer till, SendFacts facts)
        : office_(std::move(office)), till_(std::move(till)), facts_(std::move(facts)) {}

    void run() {
        for (const SendStep& step : sendSteps())
            if (step.when.holds(facts_))
                for (const Action& action : *step.what) std::visit([this](const auto& one) { take(one); }, action);
        flush();
    }

private:
    // By their captions.
    static bool isCopied(const char* caption) {
        static const QSet<QString> kCopied{
            QStringLiteral("VARE"),       QStringLiteral("VAREALIAS"),     QStringLiteral("Produkt"),
            QStringLiteral("Kunder"),     QStringLiteral("Delvareimport"), QStringLiteral("Pris"),
            QStringLiteral("LEVERANDOR"), QStringLiteral("VAREGRUPPE"),    QStringLiteral("Priskategori")};
        return kCopied.contains(QString::fromUtf8(caption));
    }

    template <typename Other>
    void take(const Other&) {}
    void take(const CreateTables& action) { batch(till_, createTablesSql(action.tables)); }
    void take(const DropTable& action) { batch(till_, dropTableSql(action.name)); }
    void take(const TillBatch& action) { batch(till_, sqlOf(action.sql, facts_)); }
    void take(const BackOfficeBatch& action) { batch(office_, sqlOf(action.sql, facts_)); }
    void take(const Install& action) {
        batch(till_, dropProcedureSql(*action.procedure));
        batch(till_, createProcedureSql(*action.procedure, facts_));
    }
    void take(const Run& action) { batch(till_, callSql(*action.procedure, facts_)); }
    void take(DriverTask task) {
        if (task == DriverTask::KasseVareAlle)
            batch(office_, QStringLiteral("EXEC KasseVareAlle %1, '%2', 1, '%3', 2")
                               .arg(QString::number(facts_.Ik_Ku_ID), facts_.KasseNr, facts_.SessionID));
    }
    void take(const LoadTable& action) { copy(action.caption, sqlOf(action.query, facts_), action.table); }
    void take(const CopyRows& action) { copy(action.name, QString::fromUtf8(action.query), action.table); }

    void copy(const char* name, const QString& query, const char* table) {
        if (!isCopied(name)) return;
        flush();
        const QString file = folder_.filePath(QStringLiteral("rader"));
        start(QStringLiteral("freebcp"), QStringList{query, QStringLiteral("queryout"), file, QStringLiteral("-c")} +
                                             loginOf(office_) + QStringList{QStringLiteral("-D"), office_.database});
        start(QStringLiteral("freebcp"),
              QStringList{till_.database + QStringLiteral("..") + QString::fromUtf8(table), QStringLiteral("in"), file,
                          QStringLiteral("-c"), QStringLiteral("-b"), QStringLiteral("10000")} +
                  loginOf(till_));
    }

    static QStringList loginOf(const PlainServer& server) {
        return {QStringLiteral("-S"), QString(server.address).replace(u',', u':'),
                QStringLiteral("-U"), server.user,
                QStringLiteral("-P"), server.password};
    }

    // Batches to one server go as one script.
    void batch(const PlainServer& server, const QString& sql) {
        if (scriptFor_ != &server) flush();
        scriptFor_ = &server;
        script_ += sql.toUtf8() + "\ngo\n";
    }
    void flush() {
        if (!scriptFor_) return;
        const QStringList at = scriptFor_->address.split(u',');
        const QByteArray told =
            start(QStringLiteral("tsql"),
                  {QStringLiteral("-H"), at.value(0), QStringLiteral("-p"), at.value(1), QStringLiteral("-U"),
                   scriptFor_->user, QStringLiteral("-P"), scriptFor_->password, QStringLiteral("-D"),
                   scriptFor_->database, QStringLiteral("-o"), QStringLiteral("q")},
                  script_);
        if (told.contains("Msg ")) throw std::runtime_error("tsql: " + told.toStdString());
        scriptFor_ = nullptr;
        script_.clear();
    }

    static QByteArray start(const QString& program, const QStringList& arguments, const QByteArray& input = {}) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        process.waitForFinished(-1);
        QByteArray told = process.readAll();
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            throw std::runtime_error(program.toStdString() + ": " + told.toStdString());
        return told;
    }

    PlainServer office_;
    PlainServer till_;
    SendFacts facts_;
    QTemporaryDir folder_;
    const PlainServer* scriptFor_ = nullptr;
    QByteArray script_;
};

}  // namespace torvik::bench
