// What a run shall do and how, as the window's settings and commands set it: plain values under the domain's published
// names. The engine object inherits them; what works at a till reads them and changes none.
#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

struct RunOptions {
    // The automatic run.
    QTime StartTime{0, 0};         // only hour and minute count
    QTime StartSendingTime{0, 0};  // latest start of sending in a synchronised run
    bool SynchonizedRun = false;   // in step with the back office's daily job
    bool ReceiveDataOnly = false;
    bool HelpFetching = false;  // at its time, help the copy that runs the night to fetch, and do nothing else
    TTasks Tasks;               // what the current run does

    // Which tills in which order, and how they are reached.
    int RetryCount = 2;      // attempts to connect to a till
    int RetryWaitTime = 20;  // seconds between attempts and between departments
    bool LogInAhead = true;  // to the next tills in the background; nothing of the window switches it off
    bool ReverseProcessingOrder = false;
    bool UsePlukkPrioritet = false;
    bool OverrideSourceUserNameAndPassword = false;
    QString OverrideSourceUserName;  // for the till's file share
    QString OverrideSourcePassword;

    // Fetching.
    bool IncludeVaretellingOnOppgjor = false;
    bool IncludeGiftVoucherOnOppgjor = false;
    bool IncludeCreditCouponOnOppgjor = false;
    bool IncludeDTS_TorvikPOS = false;
    bool OnlyOppgjor = false;
    bool IsEnterprise = false;   // chain installation; false is a single back office
    QString VaretellingPeriode;  // YYYYMM
    QString ReplacementVa_Id;    // item number used when a sold item is unknown
    QString ReplacementForNonExistingItemNumber;

    // Sending.
    TVareOppdateringUtvalg VareOppdateringUtvalg = vopIngen;
    bool IncludeNummertype = false;
    bool FlagAsSentAfterUpdate = false;
    bool IncludeExtraSaleProducts = true;
    bool SendCustomerAndPrice = false;
    int DagerSidenEndring = 0;        // days that count as "changed"
    QStringList DeleteItemsWeekDays;  // "1" Monday to "7" Sunday
    TInitializeItems InitializeItems{nutvOppgjor};

    bool AllowMultiThreading = false;  // diverts log lines to Logbuffer

    // Questions that follow each other go in one round trip, and so do those statements of a send that bear it. No
    // control of the window sets it: it is there to be compared with, and for a server that does not bear it.
    bool ReadsTogether = true;

    // A second name for the same value.
    [[nodiscard]] TVareOppdateringUtvalg SQLVareOppdateringUtvalg() const { return VareOppdateringUtvalg; }
    void SetSQLVareOppdateringUtvalg(TVareOppdateringUtvalg value) { VareOppdateringUtvalg = value; }

    // True only on a day when items are deleted, whatever SetDeleteItemsOnSend stored.
    [[nodiscard]] bool DeleteItemsOnSend(QDate today) const { return fDeleteItemsOnSend && DeleteItemsThisDay(today); }
    void SetDeleteItemsOnSend(bool value) { fDeleteItemsOnSend = value; }
    [[nodiscard]] bool DeleteItemsThisDay(QDate today) const {
        return DeleteItemsWeekDays.contains(QString::number(today.dayOfWeek()));
    }

    // Lets AddLog call OnAddLog and keeps operations from asking the user.
    [[nodiscard]] bool RunAsService() const { return FRunAsService; }
    void SetRunAsService(bool value) { FRunAsService = lastRunAsService_ = value; }
    // What was last set on any engine of the process. Nothing of a run reads it.
    [[nodiscard]] static bool LastRunAsService() { return lastRunAsService_; }

private:
    bool fDeleteItemsOnSend = false;
    bool FRunAsService = false;
    static inline bool lastRunAsService_ = false;
};

}  // namespace torvik
