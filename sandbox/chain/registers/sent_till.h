// What a send leaves on a till, told by rules of its own and never by what the program did: the measure that sends are
// held against. The rules stand in docs/sending.md.
#pragma once

#include <string>
#include <vector>

#include "sandbox/chain/registers/kept_table.h"

namespace sandbox::chain {

enum class ItemsSent { None, Changed, All };

struct SendOptions {
    ItemsSent items = ItemsSent::All;
    bool pricesAndCustomers = true;
    bool deleteItems = false;  // as asked for on this day of the week
    int daysSinceChange = 30;
};

// One send to one till: the registers on both sides, which it changes.
struct Send {
    KeptTables& office;
    KeptTables& till;
    int department = 0;  // Ik_Ku_Id
    std::string number;  // of the till
    int version = 0;
    SendOptions options;
    Moment now;

    [[nodiscard]] bool isDue(const Row& row, const char* changed) const;  // by ItemsSent and the day of its change
};

void send(const Send& send);
// The item that the till sells as a gift card, which the walk over the tills sets after each send.
void sendGiftCardItem(const Send& send);

}  // namespace sandbox::chain
