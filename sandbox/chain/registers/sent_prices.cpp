// See sent_prices.h. The till keeps those prices alone that this send holds: with changes only, the changed ones.
#include "sandbox/chain/registers/sent_prices.h"

#include <set>

#include "sandbox/chain/registers/sent_items.h"

namespace sandbox::chain {

namespace {

// Price categories of somebody who buys: a customer who is not blocked, staff who are active.
std::set<std::string> usedCategories(const Send& send) {
    std::set<std::string> used;
    for (const Row* customer : send.office["Kunde"].rows())
        if (numberOf(*customer, "Ku_Type") > 0 && numberOf(*customer, "Ku_Sperret") == 0)
            used.insert(textOf(*customer, "Ku_Pi_Id"));
    for (const Row* clerk : send.office["InternKundeAnsatt"].rows())
        if (numberOf(*clerk, "Ika_Aktiv") == 1) used.insert(textOf(*clerk, "Ika_Pi_Id"));
    return used;
}

}  // namespace

void sendPrices(const Send& send) {
    KeptTable& categories = send.till["PRISKATEGORI"];
    KeptTable& listed = send.till.replace({"iPriskategori", "*iPi_Id iPi_Navn iPi_Inklmva"});
    categories.clear();
    for (const Row* category : send.office["Priskategori"].rows()) {
        categories.put({{"PI_ID", category->at("Pi_ID")},
                        {"PI_NAVN", category->at("Pi_Navn")},
                        {"PI_INKLMVA", category->at("Pi_InklMva")}});
        listed.put({{"iPi_Id", category->at("Pi_ID")},
                    {"iPi_Navn", category->at("Pi_Navn")},
                    {"iPi_Inklmva", category->at("Pi_InklMva")}});
    }
    for (Row* customer : send.till["KUNDE"].rows())
        if (!categories.contains(textOf(*customer, "KU_PI_ID"))) customer->at("KU_PI_ID") = {};

    KeptTable& prices = send.till["PRIS"];
    prices.clear();
    KeptTable& sent = send.till.replace({"iPris", "*iPs_Va_Id~ *iPs_Pi_Id iPs_Prisen"});
    const auto chosen = chosenItems(send);
    const auto used = usedCategories(send);
    for (const Row* price : send.office["Pris"].rows()) {
        if (!chosen.contains(textOf(*price, "Ps_Va_Id")) || !used.contains(textOf(*price, "Ps_Pi_Id")) ||
            !send.isDue(*price, "Ps_UpdDato"))
            continue;
        prices.put({{"PS_VA_ID", price->at("Ps_Va_Id")},
                    {"PS_PI_ID", price->at("Ps_Pi_Id")},
                    {"PS_PRISEN", price->at("Ps_Prisen")}});
        sent.put({{"iPs_Va_Id", price->at("Ps_Va_Id")},
                  {"iPs_Pi_Id", price->at("Ps_Pi_Id")},
                  {"iPs_Prisen", price->at("Ps_Prisen")}});
    }
}

}  // namespace sandbox::chain
