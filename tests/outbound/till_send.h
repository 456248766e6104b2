// A chain of one till, and the data module that sends to it over real sessions: what a send leaves at the till can be
// read, as rows. Each test builds its own.
#pragma once

#include <gtest/gtest.h>

#include <QStringList>

#include "engine/base/abort.h"
#include "engine/roster/avdeling.h"
#include "outbound/driver/dm_torvik_to_pos.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {

using Rows = std::vector<std::string>;

class TillSend {
public:
    explicit TillSend(int version = 229, sandbox::chain::ChainOptions options = {}) : run(oneTill(options, version)) {
        dm.OnProgress = [this](QObject*, int percent, const QString& text) {
            progress << QStringLiteral("%1 %2").arg(percent).arg(text);
        };
        dm.OnLog = [this](const QString& line) { log << line; };
        dm.ItemUpdateSelection = iusAll;
    }

    // Sends as the walk over the tills does it; the failure's text, empty for none.
    QString send() {
        run.target.Open();
        run.engine.Avdeling->Open();
        run.engine.ApplySourceConnectionSettings();
        run.source.Open();
        dm.SetSourceConnection(&run.target);
        dm.SetDestinationConnection(&run.source);
        dm.Ik_Ku_ID = static_cast<int>(run.engine.Avdeling->Qry().FieldByName(QStringLiteral("Ik_Ku_Id")).AsInteger());
        dm.KasseNr = run.engine.Avdeling->Ikk_Kassenummer();
        failure = nullptr;
        try {
            dm.Execute();
            return {};
        } catch (const std::exception& e) {
            failure = std::current_exception();
            return ErrorText(e);
        }
    }

    void onTill(const std::string& batch) { run.chain.runInTill(0, batch); }
    void inBackOffice(const std::string& batch) { run.chain.runInBackOffice(batch); }
    [[nodiscard]] Rows till(const std::string& sql) const { return run.tillRows(0, sql); }
    [[nodiscard]] Rows backOffice(const std::string& sql) const { return run.backOfficeRows(sql); }

    ChainRun run;
    TdmTorvikToPOS dm;
    QStringList progress;  // "percent text"
    QStringList log;
    std::exception_ptr failure;  // of the last send

private:
    static sandbox::chain::ChainOptions oneTill(sandbox::chain::ChainOptions options, int version) {
        options.departments = 1;
        options.tills = 1;
        options.days = 1;
        options.versions = {version};
        return options;
    }
};

}  // namespace torvik::test
