// A till may have failed without a failure that the walk has met: a single settlement's or a sending's error line. Its
// story is then the lines.
#include "shell/status/till_story.h"

#include "engine/status/oppgjor_status.h"
#include "engine/status/till_state.h"

namespace torvik {

namespace {

TillStory::Facts factsOf(const TillFailure& failure) {
    const FailureFacts& facts = failure.Facts;
    QString reason = facts.Reason();
    if (failure.OfficeLost) reason += QStringLiteral(" (back office)");
    const std::pair<QString, QString> all[] = {
        {QStringLiteral("Tidspunkt"), failure.At.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"))},
        {QStringLiteral("Hva"), facts.Text},
        {QStringLiteral("Årsak"), reason},
        {QStringLiteral("Steg"), facts.Step},
        {QStringLiteral("Tabell"), facts.Table},
        {QStringLiteral("Serverens svar"), facts.ServerText == facts.Text ? QString() : facts.ServerText},
        {QStringLiteral("Serverens feilnummer"), facts.Number != 0 ? QString::number(facts.Number) : QString()},
        {QStringLiteral("Gjør"), facts.Remedy()},
    };
    TillStory::Facts told;
    for (const auto& fact : all)
        if (!fact.second.isEmpty()) told << fact;
    return told;
}

QStringList errorLinesOf(const TfraOppgjorStatus& status, const OppgjorStatusRow& till) {
    QStringList lines;
    const LogEntryTable& entries = status.memLogEntries;
    for (int row = 0; row < entries.RecordCount(); ++row) {
        const LogEntryRow& line = entries.Row(row);
        if (line.Severity != kls_Error || line.Ik_Ku_Id != till.Ik_Ku_Id || line.Kassenr != till.Kassenr.trimmed())
            continue;
        lines << line.DateAndTime.toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("   ") + line.Msg;
    }
    return lines;
}

QString paragraph(const QString& text) {
    return QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
}

}  // namespace

TillStory storyOf(const TfraOppgjorStatus& status, int row) {
    const OppgjorStatusRow& till = status.memOppgjorStatus.Row(row);
    TillStory story;
    story.Title = QStringLiteral("Avdeling %1 (%2), kasse %3")
                      .arg(till.Avdnr.trimmed(), till.AvdNavn.trimmed(), till.Kassenr.trimmed());
    story.State = TillStateText(TillStateOf(status, row));
    for (const TillFailure& failure : status.Failures(row)) story.Failures << factsOf(failure);
    story.ErrorLines = errorLinesOf(status, till);
    // What stopped the till last decides.
    const std::vector<TillFailure>& failures = status.Failures(row);
    story.NextRun = (failures.empty() ? FailureFacts{} : failures.back().Facts).NextRun();
    return story;
}

bool hasStory(const TfraOppgjorStatus& status, int row) {
    return !status.Failures(row).empty() || TillStateOf(status, row) == TillState::Failed;
}

QString TillStory::text() const {
    QStringList lines{Title, State};
    for (const Facts& failure : Failures) {
        lines << QString();
        for (const auto& [what, value] : failure) lines << what + QStringLiteral(": ") + value;
    }
    if (!ErrorLines.isEmpty()) lines << QString() << QStringLiteral("Feillinjer:") << ErrorLines;
    lines << QString() << QStringLiteral("Neste kjøring: ") + NextRun;
    return lines.join(u'\n');
}

QString TillStory::html() const {
    QString html;
    for (const Facts& failure : Failures) {
        html += QStringLiteral("<table cellspacing=\"6\">");
        for (const auto& [what, value] : failure)
            html += QStringLiteral("<tr><td><b>%1</b></td><td>%2</td></tr>")
                        .arg(what.toHtmlEscaped(), value.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
        html += QStringLiteral("</table>");
    }
    if (!ErrorLines.isEmpty()) html += QStringLiteral("<p><b>Feillinjer</b></p>") + paragraph(ErrorLines.join(u'\n'));
    return html + QStringLiteral("<p><b>Neste kjøring</b></p>") + paragraph(NextRun);
}

}  // namespace torvik
