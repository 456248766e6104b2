// Copying, claiming and logging over the work list's tills.
#include "engine/roster/kasse_collection.h"

#include <algorithm>
#include <array>

namespace torvik {

QString SeverityText(int severity) {
    static const std::array texts{QStringLiteral("Ingen"), QStringLiteral("OK"), QStringLiteral("Advarsel"),
                                  QStringLiteral("Feil")};
    return severity >= 0 && severity < static_cast<int>(texts.size()) ? texts[static_cast<size_t>(severity)]
                                                                      : QString();
}

TKasseLogItem& TKasseLogCollection::AddLogEntry(TKasseLogSeverity ASeverity, int AMsgNo, const QString& AMsg,
                                                const QDateTime& ATimeStamp) {
    return _items.emplace_back(
        TKasseLogItem{.Severity = ASeverity, .MsgNo = AMsgNo, .Msg = AMsg, .TimeStamp = ATimeStamp, .New = true});
}

TKasseCollection::TKasseCollection() : TKasseCollection([] { return QDateTime::currentDateTime(); }) {}

TKasseCollection::TKasseCollection(std::function<QDateTime()> now) : _now(std::move(now)) {}

TKasseItem& TKasseCollection::Add() {
    return *_items.emplace_back(std::make_unique<TKasseItem>());
}

int TKasseCollection::NotTakenCount() const {
    return static_cast<int>(std::ranges::count_if(_items, [](const auto& item) { return !item->Taken; }));
}

void TKasseCollection::addCopy(const TKasseItem& item) {
    TKasseItem& copy = Add();
    copy.Ik_Ku_ID = item.Ik_Ku_ID;
    copy.Kassenr = item.Kassenr;
    copy.Avdnr = item.Avdnr;
    copy.AvdNavn = item.AvdNavn;
    copy.Taken = item.Taken;
}

void TKasseCollection::CopyItems(const TKasseCollection& Source) {
    if (&Source == this) return;
    Clear();
    for (const auto& item : Source._items) addCopy(*item);
}

void TKasseCollection::CopyNextAvailableItems(TKasseCollection& Source, int CopyCount) {
    if (&Source == this) return;
    Clear();
    for (const auto& item : Source._items) {
        if (item->Taken) continue;
        addCopy(*item);
        item->Taken = true;
        // The count is only looked at after a copy: a CopyCount of 0 claims every free till.
        if (Count() == CopyCount) return;
    }
}

void TKasseCollection::AddOppgjorStatus(int Ik_Ku_Id, const QString& Kassenr, TOppgjorStatusType Value) {
    for (const auto& item : _items) {
        if (item->Ik_Ku_ID == Ik_Ku_Id && item->Kassenr == Kassenr) item->OppgjorStatus.insert(Value);
    }
}

void TKasseCollection::AddLogItem(int Ik_Ku_Id, const QString& Kassenr, TKasseLogSeverity Severity, int AMsgNo,
                                  const QString& AMessage) {
    for (const auto& item : _items) {
        if (item->Ik_Ku_ID == Ik_Ku_Id && item->Kassenr == Kassenr)
            item->LogItems.AddLogEntry(Severity, AMsgNo, AMessage, _now());
    }
}

}  // namespace torvik
