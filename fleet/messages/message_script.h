// A message to the tills as the script that carries it: each till's own procedure CreateInstantMessage takes it, where
// there is one. ExecuteSQLScript runs it, with parameter checking. See docs/fleet.md.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace torvik {

struct InstantMessage {
    QString Tittel;
    QString Til;
    QString Fra;
    QString Melding;
    bool DisplayOnPosFront = false;  // on the till's start screen too, where the till can do that
    int Prioritet = 3;               // of the start screen, 1 to 3, as is
    QDateTime Expiry;                // the time to which it is shown there
};

// One batch, whatever the message's lines say. Quotes in the message itself are doubled; one in the other texts breaks
// the statement, and every till says so.
[[nodiscard]] QStringList messageScript(const InstantMessage& message);

}  // namespace torvik
