// The rows in the order in which they depend on each other: without a data link nobody asks the back office.
#include "shell/setup/setup_check.h"

#include <QScopeGuard>
#include <QTemporaryFile>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/db/udl.h"
#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"
#include "shell/setup/mail_server_check.h"

namespace torvik {

namespace {

constexpr int kSecondsToConnect = 5;

// What the back office's login must be able to do. Nothing of it changes a row.
struct RightRow {
    const char* what;
    const char* batch;
};
constexpr RightRow kRights[] = {
    {"lese", "SELECT COUNT(*) FROM Internkundekasse"},
    {"skrive", "UPDATE Innstillinger SET In_DagligJobbFlagg = In_DagligJobbFlagg WHERE 1 = 0"},
    {"lage mellomtabeller", R"(BEGIN TRANSACTION
CREATE TABLE dbo.Temp_Rettighet_Import (Nr int NULL)
ROLLBACK TRANSACTION)"},
};

constexpr const char* kProcedures[] = {"ExecuteDtsFromPos", "DeleteFromTemp",      "UpdateButikksalg2", "GetID",
                                       "AccumulatePosData", "UpdateVareStatistikk"};
constexpr char kMissingProcedure[] = "SELECT OBJECT_ID('%1')";

class Check {
public:
    Check(const SetupToCheck& setup, const std::function<void(const CheckResult&)>& tell)
        : setup_(setup), tell_(tell) {}

    void all() {
        startTime();
        logFolder();
        if (row(QStringLiteral("Datalenken \"Torvik.UDL\""), [this] { return dataLink(); }) &&
            row(QStringLiteral("Back office"), [this] { return backOffice(); })) {
            row(QStringLiteral("Versjon av back office"), [this] { return version(); });
            for (const RightRow& right : kRights)
                row(QStringLiteral("Rettighet i back office: %1").arg(QString::fromUtf8(right.what)),
                    [&] { return mayDo(right); });
            row(QStringLiteral("Prosedyrer i back office"), [this] { return procedures(); });
            tills();
        }
        if (setup_.sendsLogs)
            row(QStringLiteral("E-postserver"), [this] {
                return greetingOf(setup_.mailServer, setup_.mailPort, [this] { setup_.engine.Seam.pumpMessages(); });
            });
    }

private:
    // A row that is good with what `find` returns, and bad with what it raises. Gives way to events first.
    bool row(const QString& what, const std::function<QString()>& find) {
        setup_.engine.Seam.pumpMessages();
        setup_.engine.TestCancel();
        try {
            tell_({what, CheckOutcome::Good, find()});
            return true;
        } catch (const std::exception& error) {
            tell_({what, CheckOutcome::Bad, ErrorText(error)});
            return false;
        }
    }

    // The hour that the clock skips in spring and repeats in autumn.
    void startTime() {
        const bool skipped = setup_.startTime.hour() == 2;
        tell_({QStringLiteral("Automatisk start kl. %1").arg(setup_.startTime.toString(u"HH:mm")),
               skipped ? CheckOutcome::Warning : CheckOutcome::Good,
               skipped
                   ? QStringLiteral("Faller bort når sommertiden begynner, og kommer to ganger når den slutter. Velg "
                                    "en annen time")
                   : QString()});
    }

    void logFolder() {
        row(QStringLiteral("Loggmappen"), [this] {
            QTemporaryFile file(setup_.folder + QStringLiteral("Log/prove"));
            if (!file.open()) throw EngineError(file.errorString());
            return QString();
        });
    }

    [[nodiscard]] QString dataLink() {
        office().Close();
        office().SetConnectString(db::ReadUdlFile(setup_.folder + QStringLiteral("Torvik.UDL")));
        return office().Server();
    }

    [[nodiscard]] QString backOffice() {
        office().Open();
        return setup_.engine.GetTargetServerAndDatabaseName();
    }

    [[nodiscard]] QString version() { return ask(QStringLiteral("select in_dbversjon from innstillinger")); }

    [[nodiscard]] QString mayDo(const RightRow& right) {
        const auto rolledBack = qScopeGuard([this] { office().Rollback(); });
        db::Query query(&office());
        query.ParamCheck = false;
        query.SQL = QString::fromUtf8(right.batch).split(u'\n');
        query.ExecSQL();
        return {};
    }

    [[nodiscard]] QString procedures() {
        QStringList missing;
        for (const char* name : kProcedures)
            if (ask(QString::fromUtf8(kMissingProcedure).arg(QString::fromUtf8(name))).isEmpty())
                missing << QString::fromUtf8(name);
        if (!missing.isEmpty())
            throw EngineError(QStringLiteral("Mangler: %1").arg(missing.join(QStringLiteral(", "))));
        return {};
    }

    void tills() {
        TAvdeling& roster = *setup_.engine.Avdeling;
        roster.ClearFilter();
        roster.SetKasseCollection(nullptr);
        roster.Open();
        const auto closed = qScopeGuard([&] {
            till().Close();
            roster.Close();
        });
        for (; !roster.Qry().Eof(); roster.Qry().Next()) {
            row(QStringLiteral("Avdeling %1, kasse %2").arg(roster.Avdelingsnummer(), roster.Ikk_Kassenummer()),
                [this] {
                    setup_.engine.ApplySourceConnectionSettings();
                    till().SetConnectionTimeout(kSecondsToConnect);
                    till().Open();
                    setup_.engine.ReadDbVersion();
                    return QStringLiteral("versjon %1").arg(setup_.engine.DbVersion());
                });
        }
    }

    [[nodiscard]] QString ask(const QString& sql) {
        db::Query query(&office());
        query.ParamCheck = false;
        query.SQL = QStringList{sql};
        query.Open();
        return query.IsEmpty() ? QString() : query.Fields(0).AsString();
    }

    [[nodiscard]] db::Session& office() const { return *setup_.engine.TargetConnection(); }
    [[nodiscard]] db::Session& till() const { return *setup_.engine.SourceConnection; }

    const SetupToCheck& setup_;
    const std::function<void(const CheckResult&)>& tell_;
};

}  // namespace

void checkSetup(const SetupToCheck& setup, const std::function<void(const CheckResult&)>& tell) {
    Check(setup, tell).all();
}

}  // namespace torvik
