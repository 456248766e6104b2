// The settlement run: walks the roster and fetches the settlements of each till into the back office. A till that fails
// is logged and passed over. Messages are pumped all the time; a command that starts during a run is kept out by the
// window, which disarms the automatic run first, and a tick by TimerBusy.
#include "engine/base/abort.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "logging/logger.h"

namespace torvik {

namespace {

// Bit of Ik_Properties: settlements of the department are not fetched.
constexpr qint64 kNotFetched = 4;

int ikKuId(const db::Query& till) {
    return static_cast<int>(till.FieldByName(QStringLiteral("ik_ku_id")).AsInteger());
}

}  // namespace

void TTorvikPos::ExecuteOppgjor() {
    AddToLogItems = false;
    AddLog(QStringLiteral("STARTER oppgjør"));
    GlobalLogger().LogInformation(QStringLiteral("Starter innhenting av oppgjør "));
    SetCancelRequest(false);
    Cancelled = false;
    try {
        prepareSettlementRun();
        fetchAllTills();
        AddToLogItems = false;
        AddLog(QStringLiteral("Fullført oppgjør"));
        GlobalLogger().LogInformation(QStringLiteral("Fullført innhenting av oppgjør for {Kasse_antall} kasser"),
                                      {Avdeling->Qry().RecordCount()});
        SaveOppgjorLog();
    } catch (const std::exception& error) {
        GlobalLogger().LogError(QStringLiteral("En feil oppstod ved innhenting av oppgjør: {Feilmelding}"),
                                {ErrorText(error)});
        AddLog(QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: %1").arg(ErrorText(error)), true);
    }
}

// Opens what the walk needs and gives every till its status row.
void TTorvikPos::prepareSettlementRun() {
    if (!target().Connected()) target().Open();
    FqryGeneralTarget->Close();
    FqryGeneralTarget->SetConnection(&target());
    LoadVareTable();
    LoadVareAliasTable();
    AddLog(QStringLiteral("Lastet %1 varer for referanseintegritet").arg(Vare->RecordCount()));

    Avdeling->Close();
    Avdeling->Open();
    db::Query& tills = Avdeling->Qry();
    AddLog(QStringLiteral("Antall kasser som skal behandles: %1").arg(tills.RecordCount()));
    GlobalLogger().LogDebug(QStringLiteral("Oppgjør skal hentes for {Kasse_antall} kasser"), {tills.RecordCount()});

    ffraOppgjorStatus->Clear();
    const auto text = [&](const char16_t* column) {
        return tills.FieldByName(QString::fromUtf16(column)).AsString().trimmed();
    };
    for (; !tills.Eof(); tills.Next()) {
        ffraOppgjorStatus->SetStatus(static_cast<int>(tills.FieldByName(QStringLiteral("Ikk_Ik_Ku_Id")).AsInteger()),
                                     text(u"Ik_Avdelingsnummer"), text(u"Ku_Adresse1"), text(u"Ikk_Kassenummer"),
                                     ostDoNotSet, oksNull, {}, QTime(), -1);
    }
    tills.First();
    ffraOppgjorStatus->Refresh();
    Seam.pumpMessages();
    AddToLogItems = true;
}

void TTorvikPos::fetchAllTills() {
    db::Query& tills = Avdeling->Qry();
    int done = 0;
    while (!tills.Eof()) {
        const int id = ikKuId(tills);
        const QString kassenr = tills.FieldByName(QStringLiteral("Ikk_Kassenummer")).AsString();
        try {
            fetchTill();
        } catch (const std::exception& error) {
            reportTillFailure(ErrorText(error));
        }
        const int department = ikKuId(tills);
        CheckTargetConnection(id, kassenr);

        ++done;
        const int count = tills.RecordCount();
        if (OnProgress) {
            // "fullført" also stands for a till that failed.
            OnProgress(this, done * 100 / count,
                       QStringLiteral("AvdID %1, KasseNr %2 fullført. Hentet oppgjør fra %3 av %4 kasser")
                           .arg(QString::number(id), kassenr, QString::number(done), QString::number(count)));
        }
        if (Avdeling->KasseCollection())
            ShowKasseLogs(false, *Avdeling->KasseCollection(), true, ffraOppgjorStatus.get());
        TestCancel();

        tills.Next();
        if (!tills.Eof() && ikKuId(tills) != department) WaitRetryTime();
        // The row has moved on: this names the next till, and the last one twice.
        AddLog(QStringLiteral("Hentet oppgjør fra avd. %1, kasse %2. ")
                   .arg(Avdeling->Avdelingsnummer(), Avdeling->Ikk_Kassenummer()));
    }
}

// The settlements of the till of the current row. On failure the source session stays open until the next till.
void TTorvikPos::fetchTill() {
    const QString avd = Avdeling->Avdelingsnummer();
    const QString kasse = Avdeling->Ikk_Kassenummer();
    if (Avdeling->Qry().FieldByName(QStringLiteral("ik_properties")).AsInteger() & kNotFetched) {
        GlobalLogger().LogWarning(
            QStringLiteral("Henter ikke oppgjør for avdeling {Avdeling} kasse {Kassenummer}, fordi den er satt opp "
                           "slik at den ikke hentes (ik_properties)"),
            {avd, kasse});
        AddLog(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den er satt opp slik at den ikke hentes "
                              "(ik_properties)")
                   .arg(avd, kasse));
        return;
    }
    if (!ConnectSource()) {
        throw EngineError(QStringLiteral("Klarte ikke å koble til avdelingsnummer %1 kassenummer %2)").arg(avd, kasse));
    }
    if (SourceHasOpenTransactions()) {
        throw EngineError(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den er i en transaksjon. "
                                         "Kanskje kasseoppgjøret ikke er avsluttet")
                              .arg(avd, kasse));
    }
    if (SourceHasTemporarySettlements()) {
        throw EngineError(QStringLiteral("Henter ikke oppgjør (avd. %1, kasse %2), fordi den har midlertidige oppgjør "
                                         "(OP_TYPE=MIDLERTIDIG)")
                              .arg(avd, kasse));
    }
    if (!OnFetchTill) throw EngineError(QStringLiteral("OnFetchTill finnes ikke i dette programmet"));
    OnFetchTill(*this);
    source().Close();
}

void TTorvikPos::reportTillFailure(const QString& message) {
    const QString avd = Avdeling->Avdelingsnummer();
    const QString kasse = Avdeling->Ikk_Kassenummer();
    GlobalLogger().LogError(QStringLiteral("Feil ved innhenting av oppgjør for avdelingsnummer {Avdeling} kassenummer "
                                           "{Kassenummer}: {Feilmelding}"),
                            {avd, kasse, message});
    AddLog(QStringLiteral("Feil i ExecuteOppgjor for avd. %1, kasse %2. Se feil nedenfor").arg(avd, kasse), true);
    AddLog(message, true);
}

}  // namespace torvik
