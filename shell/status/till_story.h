// The whole story of a till in a run, for the operator who asks why it failed: what the walk has kept of its failures,
// the error lines of its log, and what the next run will do. TillStoryDialog shows it.
#pragma once

#include <QList>
#include <QString>
#include <utility>

namespace torvik {

class TfraOppgjorStatus;

struct TillStory {
    QString Title;                                     // the till: department, name and number
    QString State;                                     // "Feilet", "Ferdig" and so on
    using Facts = QList<std::pair<QString, QString>>;  // what, and its value
    QList<Facts> Failures;                             // first failure first
    QStringList ErrorLines;                            // with their times
    QString NextRun;

    // As lines of text, for the clipboard.
    [[nodiscard]] QString text() const;
    // The same to be looked at.
    [[nodiscard]] QString html() const;
};

// Of a row of memOppgjorStatus.
[[nodiscard]] TillStory storyOf(const TfraOppgjorStatus& status, int row);
// The till has failed, or something of it has.
[[nodiscard]] bool hasStory(const TfraOppgjorStatus& status, int row);

}  // namespace torvik
