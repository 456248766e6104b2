// What is known of the till that is being sent to, and what this send is to do there: the values that the texts and
// conditions of the exports (when.h, sql_text.h) are made of. Filled by TdmTorvikToPOS.
#pragma once

#include <QString>
#include <set>
#include <string>

namespace torvik {

// How much of the item register is sent.
enum TItemUpdateSelection { iusNone, iusChanged, iusAll };

struct SendFacts {
    int Ik_Ku_ID = 0;  // the department's customer id
    QString KasseNr;
    QString SessionID;
    int TorvikPOSversion = 0;  // the till's schema version
    TItemUpdateSelection ItemUpdateSelection = iusChanged;
    int DagerSidenEndring = 30;
    bool SendPriceAndCustomer = false;
    bool DeleteItem = false;
    bool SendCurrency = false;
    bool SendVouchers = true;
    QString ReplaceItemNumber;
    std::set<std::string> tillTables;  // of those asked for (AskForTable), the ones that the till has
};

}  // namespace torvik
