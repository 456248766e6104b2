// The program as the cases of a fault run it when it sends: everything that a send can hold, to every till.
#pragma once

#include "engine/base/abort.h"
#include "engine/roster/avdeling.h"
#include "outbound/run/send_run.h"
#include "tests/support/chain_program.h"
#include "tests/support/status_rows.h"

namespace torvik::test {

class SendProgram : public ChainProgram {
public:
    SendProgram(const std::string& dataLink, const QString& noteFolder) : ChainProgram(dataLink, noteFolder) {
        joinSending(engine);
        engine.Tasks = TTasks{taSend};
        engine.VareOppdateringUtvalg = vopAlle;
        engine.DagerSidenEndring = 30;
        engine.SendCustomerAndPrice = true;
        engine.SetDeleteItemsOnSend(true);
        for (int day = 1; day <= 7; ++day) engine.DeleteItemsWeekDays << QString::number(day);
        engine.ffraOppgjorStatus = std::make_unique<TfraOppgjorStatus>();
        engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
    }

    // One run over all tills, from a fresh back-office session. What ended the run before its end; empty for nothing.
    QString send() {
        try {
            target.Close();
            target.Open();
            engine.ExecuteDTSToPos();
            return {};
        } catch (const std::exception& failure) {
            return ErrorText(failure);
        }
    }
    [[nodiscard]] QStringList status() const { return statusRows(engine); }
};

}  // namespace torvik::test
