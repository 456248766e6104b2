// The order in which the parts of a send count: staff before price categories, groups before customers, items before
// their aliases, parts and offers, deletion last.
#include "sandbox/chain/registers/sent_till.h"

#include "sandbox/chain/chance.h"
#include "sandbox/chain/registers/item_deletion.h"
#include "sandbox/chain/registers/sent_discounts.h"
#include "sandbox/chain/registers/sent_items.h"
#include "sandbox/chain/registers/sent_offers.h"
#include "sandbox/chain/registers/sent_people.h"
#include "sandbox/chain/registers/sent_prices.h"
#include "sandbox/chain/registers/sent_vouchers.h"

namespace sandbox::chain {

bool Send::isDue(const Row& row, const char* changed) const {
    if (options.items != ItemsSent::Changed) return true;
    const auto* moment = std::get_if<Moment>(&row.at(changed));
    return moment && moment->milliseconds > now.milliseconds - options.daysSinceChange * kDay;
}

void sendGiftCardItem(const Send& send) {
    const std::string item = textOf(*send.office["Innstillinger"].find("1"), "In_Gavekort_Va_ID");
    if (item.empty()) return;
    send.till["GAVEKORTVARE"].clear();
    if (send.till["VARE"].contains(item))
        send.till["GAVEKORTVARE"].put({{"GAV_VA_ID", item}, {"GAV_AKTIV", integer(1)}});
}

void send(const Send& send) {
    sendExtraSaleItems(send);
    sendSettings(send);
    sendStaff(send);
    sendReasons(send);
    if (send.options.pricesAndCustomers) {
        sendPrices(send);
        sendCustomerGroups(send);
    }
    sendCustomers(send);
    sendDiscountCards(send);
    sendPaymentForms(send);
    sendItems(send);
    sendOffers(send);
    sendDiscountMatrix(send);
    sendGiftCards(send);
    sendCreditNotes(send);
    if (send.options.deleteItems) deleteItems(send);
    sendCurrencies(send);
}

}  // namespace sandbox::chain
