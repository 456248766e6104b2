// The work list of a run: the tills chosen, each with its status and its own log. The roster (TAvdeling) filters by it,
// AddLog writes into it and the status frame shows it.
#pragma once

#include <QDateTime>
#include <QString>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "engine/base/enum_set.h"

namespace torvik {

enum TKasseLogSeverity { klsNone, kls_OK, kls_Warning, kls_Error };
// "Ingen", "OK", "Advarsel" or "Feil"; empty for any other number.
[[nodiscard]] QString SeverityText(int severity);

enum TOppgjorStatusType { ostDoNotSet, ostHentet, ostSendt, ostHentetNull };
using TOppgjorStatus = EnumSet<TOppgjorStatusType>;

enum TSyncVersion { svTorvikPosSync, svDotNetV1 };
using TSyncVersions = EnumSet<TSyncVersion>;

struct TKasseLogItem {
    TKasseLogSeverity Severity = klsNone;
    int MsgNo = 0;
    QString Msg;
    QDateTime TimeStamp;
    bool New = true;  // until it has been copied to the status frame
};

class TKasseLogCollection {
public:
    // The reference stays good while the collection lives.
    TKasseLogItem& AddLogEntry(TKasseLogSeverity ASeverity, int AMsgNo, const QString& AMsg,
                               const QDateTime& ATimeStamp);

    [[nodiscard]] int Count() const { return static_cast<int>(_items.size()); }
    [[nodiscard]] TKasseLogItem& operator[](int index) { return _items[static_cast<size_t>(index)]; }
    [[nodiscard]] const TKasseLogItem& operator[](int index) const { return _items[static_cast<size_t>(index)]; }
    auto begin() { return _items.begin(); }
    auto end() { return _items.end(); }
    [[nodiscard]] auto begin() const { return _items.begin(); }
    [[nodiscard]] auto end() const { return _items.end(); }

private:
    std::deque<TKasseLogItem> _items;
};

struct TKasseItem {
    int Ik_Ku_ID = -1;
    QString Avdnr;
    QString AvdNavn;
    QString Kassenr;
    bool Taken = false;  // a worker has claimed this till
    TOppgjorStatus OppgjorStatus;
    TKasseLogCollection LogItems;
    TSyncVersion SyncVersion = svTorvikPosSync;
};

class TKasseCollection {
public:
    TKasseCollection();
    // `now` stamps the log items in place of the local time.
    explicit TKasseCollection(std::function<QDateTime()> now);

    // Appends an item with the initial values; the reference stays good until Clear.
    TKasseItem& Add();
    void Clear() { _items.clear(); }
    [[nodiscard]] int Count() const { return static_cast<int>(_items.size()); }
    [[nodiscard]] TKasseItem& operator[](int index) { return *_items[static_cast<size_t>(index)]; }
    [[nodiscard]] const TKasseItem& operator[](int index) const { return *_items[static_cast<size_t>(index)]; }

    [[nodiscard]] int NotTakenCount() const;
    // Becomes a copy of Source without its status, logs and sync versions.
    void CopyItems(const TKasseCollection& Source);
    // Becomes a copy of Source's next free tills, which are marked taken there; with CopyCount below 1 of all of them.
    void CopyNextAvailableItems(TKasseCollection& Source, int CopyCount);
    // Both work on every item whose id and till number equal the arguments exactly, trailing blanks included.
    void AddOppgjorStatus(int Ik_Ku_Id, const QString& Kassenr, TOppgjorStatusType Value);
    void AddLogItem(int Ik_Ku_Id, const QString& Kassenr, TKasseLogSeverity Severity, int AMsgNo,
                    const QString& AMessage);

private:
    void addCopy(const TKasseItem& item);

    std::function<QDateTime()> _now;
    std::vector<std::unique_ptr<TKasseItem>> _items;
};

// One till's identity as its own database tells it.
struct TTorvikPOSConfig {
    QString In_Navn;
    QString In_Adr1;
    QString In_Adr2;
    QString In_Adr3;
    QString In_Telefon;
    QString In_Telefax;
    QString In_Avdnr;
    QString In_Kassenr;
    QString In_Orgnr;
};

}  // namespace torvik
