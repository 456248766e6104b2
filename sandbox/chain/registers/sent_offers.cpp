// See sent_offers.h.
#include "sandbox/chain/registers/sent_offers.h"

namespace sandbox::chain {

namespace {

constexpr int kApproved = 2;

constexpr ColumnPair kOfferColumns[] = {{"PR_FRADATO", "Pr_FraDato"},
                                        {"PR_TILDATO", "Pr_TilDato"},
                                        {"PR_TYPE", "Pr_Type"},
                                        {"PR_BEREGNINGSMETODE", "Pr_Beregningsmetode"},
                                        {"PR_FAST_RABATT", "Pr_Fast_Rabatt"}};

// Approved, valid now, of a kind that tills know, and for this department.
bool isOffered(const Send& send, const Row& offer) {
    const auto moment = [&](const char* column) { return std::get<Moment>(offer.at(column)).milliseconds; };
    const double type = numberOf(offer, "Pr_Type");
    const double method = numberOf(offer, "Pr_Beregningsmetode");
    const bool known = type == 4 || type == 5 || (type >= 0 && type <= 3 && (method == 0 || method == 4));
    const bool here =
        numberOf(offer, "Pr_GjelderAlleAvd") == 1 ||
        send.office["PristilbudInternKunde"].contains(textOf(offer, "Pr_Id"), std::to_string(send.department));
    return known && here && numberOf(offer, "Pr_Pst_Id") == kApproved &&
           moment("Pr_FraDato") <= send.now.milliseconds && send.now.milliseconds <= moment("Pr_TilDato");
}

}  // namespace

// An offer that a voucher of the till points to stays, without its lines.
void sendOffers(const Send& send) {
    if (send.version < 178) return;
    KeptTable& offers = send.till["PRISTILBUD"];
    KeptTable& lines = send.till["PRISTILBUDLINJE"];
    KeptTable& listed = send.till.replace(
        {"PRISTILBUD_IMPORT", "*PR_ID PR_FRADATO PR_TILDATO PR_TYPE PR_BEREGNINGSMETODE PR_FAST_RABATT"});
    KeptTable& listedLines = send.till.replace({"PRISTILBUDLINJE_IMPORT", "*PL_VA_ID~ *PL_PR_ID PL_PRIS"});
    for (const Row* offer : send.office["Pristilbud"].rows())
        if (isOffered(send, *offer)) copyColumns(listed.put({{"PR_ID", offer->at("Pr_Id")}}), *offer, kOfferColumns);
    for (const Row* line : send.office["Pristilbudlinje"].rows())
        if (listed.contains(textOf(*line, "Pl_Pr_Id")))
            listedLines.put({{"PL_VA_ID", line->at("Pl_Va_Id")},
                             {"PL_PR_ID", line->at("Pl_Pr_Id")},
                             {"PL_PRIS", line->at("Pl_Pris")}});

    offers.eraseIf([&](const Row& offer) {
        for (const Row* voucher : send.till["KUPONG"].rows())
            if (same(voucher->at("KUP_PR_ID"), offer.at("PR_ID"))) return false;
        return !listed.contains(textOf(offer, "PR_ID"));
    });
    for (const Row* offer : listed.rows()) offers.put(*offer);
    lines.clear();
    for (const Row* line : listedLines.rows())
        if (send.till["VARE"].contains(textOf(*line, "PL_VA_ID"))) lines.put(*line);
}

void sendCurrencies(const Send& send) {
    if (numberOf(*send.office["Innstillinger"].find("1"), "In_SendValutaTilkasse") == 0) return;
    KeptTable& listed = send.till.replace({"VALUTAIMPORT", "*VUI_ID VUI_NAVN~ VUI_KURS VUI_FORHOLD"});
    for (const Row* currency : send.office["Valuta"].rows()) {
        listed.put({{"VUI_ID", currency->at("Vu_ID")},
                    {"VUI_NAVN", currency->at("Vu_Navn")},
                    {"VUI_KURS", currency->at("Vu_Kurs")},
                    {"VUI_FORHOLD", currency->at("Vu_Forhold")}});
        send.till["VALUTA"].put({{"VU_ID", currency->at("Vu_ID")},
                                 {"VU_NAVN", currency->at("Vu_Navn")},
                                 {"VU_KURS", currency->at("Vu_Kurs")},
                                 {"VU_ENHET", currency->at("Vu_Forhold")}});
    }
}

void sendReasons(const Send& send) {
    KeptTable& listed = send.till.replace({"GRUNNIMPORT", "*iGR_ID iGR_GT_ID iGR_NAVN iGR_UTSKRIFTSFLAGG iGR_AKTIV"});
    for (const Row* reason : send.office["PosGrunn"].rows()) {
        const Cell active = integer(numberOf(*reason, "Pos_Gr_Synlig_Kasse") != 0);
        listed.put({{"iGR_ID", reason->at("Pos_Gr_Id")},
                    {"iGR_GT_ID", reason->at("Pos_Gr_Gt_Id")},
                    {"iGR_NAVN", reason->at("Pos_Gr_Navn")},
                    {"iGR_UTSKRIFTSFLAGG", reason->at("Pos_Gr_Utskriftsflagg")},
                    {"iGR_AKTIV", active}});
        send.till["GRUNN"].put({{"GR_ID", reason->at("Pos_Gr_Id")},
                                {"GR_GT_ID", reason->at("Pos_Gr_Gt_Id")},
                                {"GR_NAVN", reason->at("Pos_Gr_Navn")},
                                {"GR_UTSKRIFTSFLAGG", reason->at("Pos_Gr_Utskriftsflagg")},
                                {"GR_AKTIV", active}});
    }
}

// Their limits alone, and of those that the till has.
void sendPaymentForms(const Send& send) {
    KeptTable& listed =
        send.till.replace({"BETALINGFORMIMPORT", "*TBF_ID TBF_MIN_BELOP# TBF_MAKS_BELOP# TBF_ER_KONTANT"});
    if (send.version < 213) return;
    static constexpr ColumnPair kColumns[] = {{"BF_MIN_BELOP", "Pos_Bf_Min_Belop"},
                                              {"BF_MAKS_BELOP", "Pos_Bf_Maks_Belop"},
                                              {"BF_ER_KONTANT", "Pos_Bf_Er_Kontant"}};
    for (const Row* form : send.office["PosBetalingform"].rows()) {
        listed.put({{"TBF_ID", form->at("Pos_Bf_Id")},
                    {"TBF_MIN_BELOP", form->at("Pos_Bf_Min_Belop")},
                    {"TBF_MAKS_BELOP", form->at("Pos_Bf_Maks_Belop")},
                    {"TBF_ER_KONTANT", form->at("Pos_Bf_Er_Kontant")}});
        if (Row* mine = send.till["BETALINGFORM"].find(textOf(*form, "Pos_Bf_Id"))) copyColumns(*mine, *form, kColumns);
    }
}

}  // namespace sandbox::chain
