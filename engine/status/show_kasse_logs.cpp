// From the work list's logs to the status frame: rows and icons go in as one change each.
#include "engine/status/show_kasse_logs.h"

#include "engine/status/oppgjor_status.h"
#include "engine/status/till_state.h"

namespace torvik {

namespace {

template <typename Each>
void forEachShown(TKasseCollection& tills, bool onlyNew, Each each) {
    for (int i = 0; i < tills.Count(); ++i) {
        for (TKasseLogItem& item : tills[i].LogItems) {
            if (onlyNew && !item.New) continue;
            each(tills[i], item);
            item.New = false;
        }
    }
}

}  // namespace

void ShowKasseLogs(bool ClearFirst, TKasseCollection& KasseCollection, bool OnlyNew, TfraOppgjorStatus* Frame,
                   const TTasks& Tasks) {
    if (!Frame) {
        // The line is built and nothing keeps it: the walk only marks the items as shown.
        forEachShown(KasseCollection, OnlyNew, [](const TKasseItem& till, const TKasseLogItem& item) {
            [[maybe_unused]] const QString line =
                QStringLiteral("%1, Kassenr %2, severity=%3, MsgNo=%4: %5")
                    .arg(QString::number(till.Ik_Ku_ID), till.Kassenr, QString::number(item.Severity),
                         QString::number(item.MsgNo), item.Msg);
        });
        return;
    }

    if (ClearFirst) Frame->memLogEntries.Close();
    Frame->memLogEntries.Open();
    // Rows and icons go in as one change each, so that the grids are redrawn once.
    std::vector<LogEntryRow> entries;
    forEachShown(KasseCollection, OnlyNew, [&](const TKasseItem& till, const TKasseLogItem& item) {
        entries.push_back({.Ik_Ku_Id = till.Ik_Ku_ID,
                           .Kassenr = till.Kassenr.trimmed(),
                           .Severity = item.Severity,
                           .MsgNo = item.MsgNo,
                           .DateAndTime = item.TimeStamp,
                           .Msg = item.Msg});
    });
    Frame->memLogEntries.Append(std::move(entries));

    std::vector<int> icons(static_cast<size_t>(Frame->memOppgjorStatus.RecordCount()));
    for (size_t row = 0; row < icons.size(); ++row)
        icons[row] = TillIcon(Frame->memOppgjorStatus.Row(static_cast<int>(row)), Frame->memLogEntries, Tasks);
    Frame->memOppgjorStatus.PostIcons(icons);
    Frame->ExpandAll();
}

}  // namespace torvik
