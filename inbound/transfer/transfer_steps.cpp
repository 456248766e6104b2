// The table of steps, and the maps in the order in which it names them.
#include "inbound/transfer/transfer_steps.h"

#include <vector>

#include "inbound/transfer/dm_pos_to_torvik.h"
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

std::span<const TransferStep> transferSteps() {
    using Dm = TdmPOStoTorvik;
    static const TransferStep kSteps[] = {
        {1, "Initialize", &Dm::initialize, nullptr, DtsLogg::None, DtsLogg::Started},
        {2, "CreateTempTables", &Dm::createTempTables},
        {3, "Startup", &Dm::startup},
        {4, "", nullptr, nullptr, DtsLogg::CopyBegins},
        {5, "Loggtype", nullptr, &kLoggtypeMap},
        {6, "Oppgjør", nullptr, &kOppgjorMap},
        {7, "Oppgjørlinje", nullptr, &kOppgjorlinjeMap},
        {8, "OppgjørBetaling", nullptr, &kOppgjorBetalingMap},
        {9, "GrunnType", nullptr, &kGrunnTypeMap},
        {10, "Grunn", nullptr, &kGrunnMap},
        {11, "Pengeenhet", nullptr, &kPengeenhetMap},
        {12, "Betalingform", nullptr, &kBetalingformMap},
        {13, "Kortutsteder", nullptr, &kKortutstederMap},
        {14, "Ordre", nullptr, &kOrdreMap},
        {15, "Ordrelinje", nullptr, &kOrdrelinjeMap},
        {16, "Ordregrunn", nullptr, &kOrdregrunnMap},
        {17, "Ordrelinjegrunn", nullptr, &kOrdrelinjegrunnMap},
        {18, "Ordrelinjetekst", nullptr, &kOrdrelinjetekstMap},
        {19, "Kupong", nullptr, &kKupongMap},
        {20, "KupongOrdrelinje", nullptr, &kKupongOrdrelinjeMap},
        {21, "Betaling", nullptr, &kBetalingMap},
        {22, "BetalingBankinfo", nullptr, &kBetalingBankinfoMap},
        {23, "Ansatt", nullptr, &kAnsattMap},
        {24, "EkstraAnsattOppgjør", nullptr, &kEkstraAnsattOppgjorMap},
        {25, "Logg", nullptr, &kLoggMap},
        {26, "Varemottak", nullptr, &kVaremottakMap},
        {27, "Varemottaklinje", nullptr, &kVaremottaklinjeMap},
        {28, "Varebestilling", nullptr, &kVarebestillingMap},
        {29, "Varebestillinglinje", nullptr, &kVarebestillinglinjeMap},
        {30, "opprett sp_UtbetalingImport", &Dm::createUtbetalingImport},
        {31, "Utbetaling", &Dm::insertUtbetaling},
        {32, "UtbetalingImport", nullptr, &kUtbetalingImportMap},
        {33, "Timer", nullptr, &kTimerMap},
        {34, "Signatur", nullptr, &kSignaturMap},
        {35, "BetalingSignatur", nullptr, &kBetalingSignaturMap},
        {36, "OrdreSignatur", nullptr, &kOrdreSignaturMap},
        {37, "OppgjorSignatur", nullptr, &kOppgjorSignaturMap},
        {38, "Vedlegg", nullptr, &kVedleggMap},
        {39, "Ordreretur", nullptr, &kOrdrereturMap},
        {40, "VippsBetaling", nullptr, &kVippsBetalingMap},
        {41, "TimerPrKode", nullptr, &kTimerPrKodeMap},
        {kInsertDataStep, "Insert Data", &Dm::insertData, nullptr, DtsLogg::AllStaged, DtsLogg::Posted},
        {43, "Oppdater Timer", &Dm::updateTimer, nullptr, DtsLogg::None, DtsLogg::TimerMarked},
        {44, "Sletter temporære tabeller", &Dm::deleteTemp},
        {45, "Avslutter overføring", &Dm::finish},
        {46, "", nullptr, nullptr, DtsLogg::Complete},
    };
    return kSteps;
}

std::span<const TransferStep> tablesFrom(const TransferStep& step) {
    const auto steps = transferSteps();
    const auto rest = steps.subspan(static_cast<std::size_t>(&step - steps.data()));
    std::size_t count = 0;
    while (count < rest.size() && rest[count].map && rest[count].before == DtsLogg::None &&
           rest[count].after == DtsLogg::None)
        ++count;
    return rest.first(count);
}

std::span<const TableMap* const> allTableMaps() {
    static const std::vector<const TableMap*> maps = [] {
        std::vector<const TableMap*> found;
        for (const TransferStep& step : transferSteps())
            if (step.map) found.push_back(step.map);
        return found;
    }();
    return maps;
}

}  // namespace torvik
