// The rows. An apply function is one assignment; what a setting means is told at the engine's field.
#include "shell/settings/setting_rows.h"

#include <QTime>
#include <array>
#include <stdexcept>
#include <string>

#include "engine/roster/avdeling.h"
#include "engine/torvik_pos.h"

namespace torvik {

namespace {

using enum SettingType;
using Engine = TTorvikPos;
using Value = QVariant;

constexpr std::array kWindow{
    SettingRow{"ReplaceProductNoOnNoExist", Boolean, "false", "cbEndrevarenr",
               "Hvis ikke varenr. finnes i Torvik, endre til:"},
    SettingRow{"ReplacementProductNo", Text, "", "edReplaceVa_Id", "", kAlways,
               [](Engine& e, const Value& v) { e.ReplacementVa_Id = v.toString(); }, "cbEndrevarenr", 1, true},
    SettingRow{"Timeout", Integer, "5", "edTimeout", "Tidsavbrudd:", kAlways,
               [](Engine& e, const Value& v) { e.RetryWaitTime = v.toInt(); }},
    SettingRow{"AutoStartTime", Time, "04:00", "edStartTime", "", kAlways,
               [](Engine& e, const Value& v) { e.StartTime = v.toTime(); }},
    SettingRow{
        "ProductsToSync", Index, "2", "cbVarer", "Varer:", kAlways,
        [](Engine& e, const Value& v) { e.VareOppdateringUtvalg = static_cast<TVareOppdateringUtvalg>(v.toInt()); }},
    SettingRow{"SystemTray", Boolean, "false", "actiSystemTray", "Vis i systemstatus felt (System Tray)"},
    SettingRow{"KunHent", Boolean, "false", "cbKunHent", "Kun hent (ikke send)", kAlways,
               [](Engine& e, const Value& v) { e.ReceiveDataOnly = v.toBool(); }},
    SettingRow{"HentSisteForst", Boolean, "false", "cbSisteForst", "Hent siste butikk først", kAlways,
               [](Engine& e, const Value& v) { e.ReverseProcessingOrder = v.toBool(); }},
    SettingRow{.name = "IncludeDTS",
               .type = Boolean,
               .defaultText = "true",
               .control = "cbIncludeSladrerull",
               .label = "Bruk DTS (må være installert)",
               .moments = kAlways,
               .apply = [](Engine& e, const Value& v) { e.IncludeDTS_TorvikPOS = v.toBool(); },
               .tickedOnlyIfEnabled = true},
    SettingRow{"PlukkPrioritet", Boolean, "false", "cbBrukPlukkprioritet", "Ta hensyn til plukkprioritet", kAlways,
               [](Engine& e, const Value& v) { e.UsePlukkPrioritet = v.toBool(); }},
    SettingRow{"ChangeNumberOfDays", Integer, "0", "seDagerSidenEndring", "Ant. dager:", kAlways,
               [](Engine& e, const Value& v) { e.DagerSidenEndring = v.toInt(); }, "cbVarer", vopEndrede},
    // Not kept: as they are at each start.
    SettingRow{nullptr, Boolean, "false", "cbIncludeTelling", "Ta med varetellinger, og bruk periode (YYYYMM):",
               kAlways, [](Engine& e, const Value& v) { e.IncludeVaretellingOnOppgjor = v.toBool(); }},
    SettingRow{nullptr, Text, "", "edVt_Periode", "", kAlways,
               [](Engine& e, const Value& v) { e.VaretellingPeriode = v.toString(); }},
    SettingRow{nullptr, Boolean, "true", "cbTaMedMersalgVare", "Ta med ekstrasalg", kAlways,
               [](Engine& e, const Value& v) { e.IncludeExtraSaleProducts = v.toBool(); }},
    SettingRow{nullptr, Boolean, "false", "cbFlagVareAfterUpdate", R"(Sett "Send til kasse" av etter oppdatering)",
               kAlways, [](Engine& e, const Value& v) { e.FlagAsSentAfterUpdate = v.toBool(); }},
    SettingRow{nullptr, Boolean, "false", "cbKunOppgjor", "Hent kun oppgjør (ikke priser osv.)", kAlways,
               [](Engine& e, const Value& v) { e.OnlyOppgjor = v.toBool() && !e.IsEnterprise; }},
    SettingRow{nullptr, Boolean, "false", "cbUseThreads", "Tillat flere tråder (threads)", kAtChange,
               [](Engine& e, const Value& v) { e.AllowMultiThreading = v.toBool(); }},
    // Last: ticking it arms the automatic run, with all that has been read before.
    SettingRow{"cbAutoStart", Boolean, "false", "cbAutoStart", "Automatisk start kl."},
};

constexpr SettingRow weekDay(const char* name, const char* control, const char* label) {
    return {name, Boolean, "false", control, label, 0, nullptr, "cbDeleteItems"};
}

// The engine has these at its start and at the next arming or command, not at the dialog's OK. The weekdays go there
// through GetDeleteItemsWeekDays, and the mail's settings are the shell's own.
// "Receipients" and "SynchonizedRun" are spelled as the store has always had them.
constexpr std::array kPreferences{
    SettingRow{"Smtp/Active", Boolean, "false", "cbActive", "Send logg"},
    SettingRow{"Smtp/Server", Text, "", "edServer", "Utgående e-post server:", 0, nullptr, "cbActive"},
    SettingRow{"Smtp/Receipients", Text, "", "edReceipients", "Mottaker(e):", 0, nullptr, "cbActive"},
    SettingRow{"Smtp/Sender", Text, "", "edSenderAddress", "Avsender e-post:", 0, nullptr, "cbActive"},
    SettingRow{"Smtp/AutomaticAccumulate", Boolean, "false", "cbAutomaticAccumulate",
               "Automatisk akkumulering etter innhenting"},
    SettingRow{"Smtp/AutomaticUpdateStatistics", Boolean, "false", "cbAutomaticUpdateStatistics",
               "Oppdater vare og kundestatistikk samtidig"},
    SettingRow{"Smtp/SendPriceAndCustomer", Boolean, "false", "cbSendPriceAndCustomer",
               "Send kunder, kundegrupper og priser", kAtStart | kAtArming | kAtCommand,
               [](Engine& e, const Value& v) { e.SendCustomerAndPrice = v.toBool(); }},
    SettingRow{"Smtp/DeleteItems", Boolean, "false", "cbDeleteItems", "Slett varer fra kasse",
               kAtStart | kAtArming | kAtCommand,
               [](Engine& e, const Value& v) { e.SetDeleteItemsOnSend(v.toBool()); }},
    weekDay("Smtp/DeleteItemsDayOne", "cbDeleteItemsDayOne", "Mandag"),
    weekDay("Smtp/DeleteItemsDayTwo", "cbDeleteItemsDayTwo", "Tirsdag"),
    weekDay("Smtp/DeleteItemsDayThree", "cbDeleteItemsDayThree", "Onsdag"),
    weekDay("Smtp/DeleteItemsDayFour", "cbDeleteItemsDayFour", "Torsdag"),
    weekDay("Smtp/DeleteItemsDayFive", "cbDeleteItemsDayFive", "Fredag"),
    weekDay("Smtp/DeleteItemsDaySix", "cbDeleteItemsDaySix", "Lørdag"),
    weekDay("Smtp/DeleteItemsDaySeven", "cbDeleteItemsDaySeven", "Søndag"),
    SettingRow{"Smtp/memExcludePOSListSQL", Memo, "", "memExcludePOSListSQL",
               "Oppgi vilkår som vil utelate enkelte kasser", kAtArming,
               [](Engine& e, const Value& v) { e.Avdeling->SetExcludePosListSQL(v.toString()); }},
    SettingRow{"Smtp/SynchonizedRun", Boolean, "false", "cbSynchonizedRun", "Aktiver synkronisert kjøring",
               kAtStart | kAtArming, [](Engine& e, const Value& v) { e.SynchonizedRun = v.toBool(); }},
    SettingRow{"Smtp/StartSendingTime", Time, "03:00", "edStartSendingTime", "", kAtStart | kAtArming,
               [](Engine& e, const Value& v) { e.StartSendingTime = v.toTime(); }},
    SettingRow{"Smtp/HelpFetching", Boolean, "false", "cbHelpFetching", "Hjelp til med innhentingen",
               kAtStart | kAtArming, [](Engine& e, const Value& v) { e.HelpFetching = v.toBool(); }},
};

template <typename Matches>
const SettingRow& rowThat(Matches matches, const char* sought) {
    for (const auto rows : {windowSettings(), preferenceSettings()})
        for (const SettingRow& row : rows)
            if (matches(row)) return row;
    throw std::invalid_argument(std::string("no setting is named ") + sought);
}

}  // namespace

std::span<const SettingRow> windowSettings() {
    return kWindow;
}

std::span<const SettingRow> preferenceSettings() {
    return kPreferences;
}

const SettingRow& settingNamed(const char* name) {
    return rowThat([name](const SettingRow& row) { return row.name && qstrcmp(row.name, name) == 0; }, name);
}

const SettingRow& settingOf(const char* control) {
    return rowThat([control](const SettingRow& row) { return qstrcmp(row.control, control) == 0; }, control);
}

}  // namespace torvik
