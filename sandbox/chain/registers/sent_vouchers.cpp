// See sent_vouchers.h. What the till has not yet handed in is never overwritten.
#include "sandbox/chain/registers/sent_vouchers.h"

#include <set>

#include "sandbox/chain/chance.h"

namespace sandbox::chain {

namespace {

constexpr std::int64_t kFirstEnd = 315532800000;  // 1980-01-01: an end before it is none
constexpr std::int64_t kYear = 365 * kDay;

struct Kind {
    const char* office;
    const char* till;
    std::string prefix;
    std::string type;  // in the notes of what has been sent
    bool endIsNeeded;  // else a card without an end is valid for a year
};

const Kind kGiftCards{"POSGAVEKORT", "GAVEKORT", "GA_", "G", false};
const Kind kCreditNotes{"POSTilgodelapp", "TILGODELAPP", "TG_", "T", true};

bool isValid(const Send& send, const Kind& kind, const Row& card) {
    const auto* end = std::get_if<Moment>(&card.at(kind.prefix + "GYLDIGTIL"));
    if (end && (kind.endIsNeeded || end->milliseconds >= kFirstEnd)) return end->milliseconds > send.now.milliseconds;
    if (kind.endIsNeeded) return false;
    const auto* taken = std::get_if<Moment>(&card.at(kind.prefix + "SYNKTIDSPUNKT"));
    return taken && taken->milliseconds + kYear > send.now.milliseconds;
}

// All valid cards are noted as sent, whether the till got them now or not. A till gets those that it has not been sent,
// and redeemed ones each time.
void sendSlips(const Send& send, const Kind& kind) {
    KeptTable& mine = send.till[kind.till];
    KeptTable& notes = send.office["InternKundeKasseOverfort"];
    const std::string department = std::to_string(send.department);
    std::set<std::string> noted;
    for (const Row* note : notes.rows())
        if (textOf(*note, "Ikko_Ikk_Ik_Ku_ID") == department && textOf(*note, "Ikko_Ikk_Kassenummer") == send.number &&
            textOf(*note, "Ikko_Type") == kind.type)
            noted.insert(textOf(*note, "Ikko_Id"));
    for (const Row* card : send.office[kind.office].rows()) {
        if (!isValid(send, kind, *card)) continue;
        const std::string id = textOf(*card, kind.prefix + "ID");
        const std::string madeAt = textOf(*card, kind.prefix + "AVDNR");
        const std::string madeBy = textOf(*card, kind.prefix + "KASSENR");
        if (!isNull(*card, kind.prefix + "BT_ID") || !noted.contains(id)) {
            const Row* known = mine.find(id, madeAt, madeBy);
            if (!known || !isNull(*known, kind.prefix + "SYNKTIDSPUNKT")) {
                Row& row = mine.put(*card);
                if (kind.till == kGiftCards.till && isNull(row, "GA_OL_ID")) row.at("GA_OL_ID") = integer(-1);
            }
        }
        if (!noted.contains(id))
            notes.put({{"Ikko_Ikk_Ik_Ku_ID", integer(send.department)},
                       {"Ikko_Ikk_Kassenummer", send.number},
                       {"Ikko_Type", kind.type},
                       {"Ikko_Id", id},
                       {"Ikko_AvdNr", madeAt},
                       {"Ikko_Kassenr", madeBy}});
    }
}

}  // namespace

void sendGiftCards(const Send& send) {
    sendSlips(send, kGiftCards);
}

void sendCreditNotes(const Send& send) {
    sendSlips(send, kCreditNotes);
}

}  // namespace sandbox::chain
