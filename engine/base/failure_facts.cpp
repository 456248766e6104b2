// The words are tables of data: one row for each kind of failure, and one for each reason of a failed connection.
#include "engine/base/failure_facts.h"

#include <QRegularExpression>

#include "engine/base/step_error.h"

namespace torvik {

namespace {

using Why = db::ConnectionError::Reason;

struct Words {
    const char* reason;
    const char* remedy;
};

Words wordsOf(Why why) {
    switch (why) {
        case Why::UnknownHost:
            return {"Servernavnet er ikke kjent", "Rett servernavnet på kassen i back office, eller se på nettverket."};
        case Why::Unreachable:
            return {"Serveren svarer ikke", "Se etter om kassen er på, om nettet virker, og om SQL Server går på den."};
        case Why::LoginFailed:
            return {"Feil brukernavn eller passord", "Rett brukeren på kassen i back office, eller på kassen selv."};
        case Why::UnknownDatabase:
            return {"Databasen finnes ikke på serveren, eller brukeren slipper ikke inn i den",
                    "Rett databasen på kassen i back office, eller brukerens rettigheter på kassen."};
        case Why::NoDriver: return {"Driveren for SQL Server mangler", "Installer driveren på denne maskinen."};
        case Why::Lost: return {"Forbindelsen ble brutt", "Se etter om kassen er på, og om nettet virker."};
        case Why::Refused: return {"Serveren avviste tilkoblingen", "Serverens svar sier hvorfor."};
    }
    return {"", ""};
}

Words wordsOf(FailureKind kind) {
    switch (kind) {
        case FailureKind::Cancelled: return {"Avbrutt av bruker", ""};
        case FailureKind::ConnectionLost: return wordsOf(Why::Lost);
        case FailureKind::CommitInDoubt:
            return {"Serveren svarte ikke på fullføringen, og ingen vet om den ble gjort", ""};
        case FailureKind::TimedOut:
            return {"Serveren brukte for lang tid", "Se etter hva annet som arbeider på serveren."};
        case FailureKind::Refused: return {"Serveren avviste en setning", "Serverens svar sier hvorfor."};
        case FailureKind::Other: return {"", ""};
    }
    return {"", ""};
}

// From the outside in: the first text is the outermost's, the last step the innermost's.
void gather(const std::exception& failure, FailureFacts& facts) {
    if (const auto* step = dynamic_cast<const StepError*>(&failure)) facts.Step = step->Step;
    if (const auto* connection = dynamic_cast<const db::ConnectionError*>(&failure)) facts.Connection = connection->Why;
    if (const auto* error = dynamic_cast<const db::Error*>(&failure); error && facts.ServerText.isEmpty()) {
        facts.ServerText = error->text();
        facts.Number = error->Number;
        facts.Table = TableOf(error->Statement, error->Line);
    }
    const auto* nesting = dynamic_cast<const std::nested_exception*>(&failure);
    if (!nesting || !nesting->nested_ptr()) return;
    try {
        nesting->rethrow_nested();
    } catch (const std::exception& inner) {
        gather(inner, facts);
    } catch (...) {
        // nothing that could be told
    }
}

}  // namespace

FailureFacts FactsOf(const std::exception& failure) {
    FailureFacts facts{.Kind = classify(failure), .Text = ErrorText(failure)};
    gather(failure, facts);
    return facts;
}

QString FailureFacts::Reason() const {
    return QString::fromUtf8((Connection ? wordsOf(*Connection) : wordsOf(Kind)).reason);
}

QString FailureFacts::Remedy() const {
    return QString::fromUtf8((Connection ? wordsOf(*Connection) : wordsOf(Kind)).remedy);
}

QString FailureFacts::NextRun() const {
    if (Kind == FailureKind::CommitInDoubt)
        return QStringLiteral(
            "Ser først etter i begge ender hvordan det gikk, og gjør så det som mangler. Ingenting tas to ganger.");
    if (Connection && *Connection != Why::Lost) return QStringLiteral("Prøver kassen på nytt. Den er ikke rørt.");
    return QStringLiteral("Begynner på kassen igjen. Det som var ferdig, står, og ingenting tas to ganger.");
}

QString TableOf(const QString& statement, int line) {
    static const QRegularExpression named(
        QStringLiteral(
            R"(\b(?:INSERT\s+BULK|INSERT\s+INTO|INSERT|UPDATE|DELETE\s+FROM|DELETE|TRUNCATE\s+TABLE|FROM|)"
            R"(CREATE\s+TABLE|DROP\s+TABLE|ALTER\s+TABLE|EXECUTE|EXEC|CALL)\s+(?:@\w+\s*=\s*)?([\w.\[\]#]+))"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression catalogue(QStringLiteral(R"(^(master\.|sys\.|sysobjects$|syscolumns$))"),
                                              QRegularExpression::CaseInsensitiveOption);
    const auto firstFrom = [&](qsizetype start) {
        for (auto match = named.globalMatch(statement, start); match.hasNext();) {
            const QString name = match.next().captured(1);
            if (!catalogue.match(name).hasMatch()) return name;
        }
        return QString();
    };
    qsizetype start = 0;
    for (int at = 1; at < line; ++at) {
        const qsizetype end = statement.indexOf(u'\n', start);
        if (end < 0) return firstFrom(0);  // a line of a procedure
        start = end + 1;
    }
    const QString found = firstFrom(start);
    return found.isEmpty() ? firstFrom(0) : found;
}

}  // namespace torvik
