#include <QPushButton>

#include "engine/db/query.h"
#include "shell/fleet/ini_viewer.h"
#include "tests/shell/commands/run_command.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik::test {

namespace {

constexpr char kAway[] = "Klarte ikke å koble til (avd. 102, kasse 1)";
constexpr char kAwayUpgrade[] = "ID 1002 AvdID 102, Oppdateringen feilet.";
constexpr char kVersion[] = "Database versjon";
constexpr char kCopying[] = "Starter kopiering";
constexpr char kInOneTransaction[] = "Transaksjon startet for måldatabase";

constexpr RunCommand kRows[] = {
    {.action = "actiOppgjorManually",
     .middle = "START OPPGJØR FOR AVDELING",
     .last = "Fullført oppgjør",
     .unreachable = "Klarte ikke å koble til avdelingsnummer 102 kassenummer 1)",
     .done = "SELECT CASE WHEN EXISTS (SELECT 1 FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS "
             "NULL) THEN 0 ELSE 1 END",
     .locksOffice = true},
    {.action = "actiSendVarer",
     .middle = "Overfører data til POS",
     .last = "Overføring til Internkunde Id 1002 kasse 1          ble utført uten problem",
     .unreachable = kStatusAlone,
     .done = "SELECT CASE WHEN EXISTS (SELECT 1 FROM VARE WHERE VA_NAVN = 'Endret her') THEN 0 ELSE 1 END",
     .before = "UPDATE VARE SET VA_NAVN = 'Endret her'",
     .locksOffice = true},
    {.action = "actiSyncNrSerie",
     .middle = "exec ok",
     .last = "fullføRT OPPDATERING AV ID",
     .unreachable = "Feil ved oppdatering av ID, avd. 102, kasse 1 (Klarte ikke koble til avd.102 kasse 1)",
     .done = "SELECT CAST(IN_NUMMERSERIER_SYNKRONISERT AS int) FROM INNSTILLINGER",
     .before = "UPDATE INNSTILLINGER SET IN_NUMMERSERIER_SYNKRONISERT = 0"},
    {.action = "actiSendProgramUpdate",
     .middle = kVersion,
     .last = "FULLFÃ˜RT OPPGRADERINGER",
     .unreachable = kAwayUpgrade,
     .done = "SELECT COUNT(*) FROM BINARYOBJECT WHERE BO_TYPE = 'TORVIKPOS'"},
    {.action = "actiRunSQL",
     .middle = kVersion,
     .last = "fullføRT SQL SCRIPT kjøring",
     .unreachable = kAway,
     .done = "SELECT CASE WHEN MIN(BF_SKUFF) = 7 THEN 1 ELSE 0 END FROM BETALINGFORM"},
    {.action = "actiNullstill",
     .middle = "fullføRT NULLSTILLING AV KASSE...",
     .last = "fullføRT NULLSTILLING AV KASSE...",
     .unreachable = kDriversWords,
     .done = "SELECT CASE WHEN EXISTS (SELECT 1 FROM ORDRE) THEN 0 ELSE 1 END"},
    {.action = "actiSendMessage",
     .middle = kVersion,
     .last = "fullføRT SQL SCRIPT kjøring",
     .unreachable = kAway,
     .done = "SELECT COUNT(DISTINCT ME_TITTEL) FROM MELDING WHERE ME_TITTEL = 'Hei'"},
    {.action = "actiHealthCheck",
     .middle = kVersion,
     .last = "fullføRT HELSESJEKK",
     .unreachable = kAway,
     .done = nullptr},
    {.action = "actiSendFile",
     .middle = kCopying,
     .last = "FULLFÃ˜RT FILKOPIERING",
     .unreachable = kStatusAlone,
     .done = nullptr,
     .copies = true},
    {.action = "dxBtnHentVaretelling",
     .middle = kInOneTransaction,
     .last = "fullføRT VARETELLING",
     .unreachable = kDriversWords,
     .done = "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'VARETELLING' AND OP_OPPDATERTTIDSPUNKT IS NOT NULL",
     .failsWithoutWork = true},
    {.action = "actiSpeedTest",
     .middle = kCopying,
     .last = "FULLFÃ˜RT HASTIGHETSTEST",
     .unreachable = kStatusAlone,
     .done = nullptr,
     .copies = true},
    {.action = "actiSendIniFileChanges",
     .middle = kVersion,
     .last = "FULLFÃ˜RT OPPDATERING AV TORVIKPOS.INI",
     .unreachable = kAwayUpgrade,
     .done = "SELECT COUNT(*) FROM BINARYOBJECT WHERE BO_TYPE = 'TORVIKPOS_CHANGE.INI'"},
    {.action = "actiViewTorvikPOSini",
     .middle = kVersion,
     .last = "fullføRT HENTING AV TORVIKPOS.INI",
     .unreachable = kAway,
     .done = nullptr},
    {.action = "btnNils",
     .middle = kVersion,
     .last = "fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE",
     .unreachable = kAway,
     .done = nullptr},
};

constexpr std::uint64_t kPiece = 1 << 16;
constexpr std::uint64_t kSize = 16 * kPiece;

}  // namespace

std::span<const RunCommand> runCommands() {
    return kRows;
}

const RunCommand& runCommand(const char* action) {
    for (const RunCommand& row : kRows)
        if (std::string_view(row.action) == action) return row;
    throw std::runtime_error(std::string("no row is of ") + action);
}

void PrintTo(const RunCommand& command, std::ostream* out) {
    *out << command.action;
}

void MemoryShare::copy(const std::string&, const std::string&, const ShareProgress& progress, const int& cancel) {
    for (std::uint64_t copied = kPiece; copied <= kSize; copied += kPiece) {
        progress(copied, kSize);
        if (cancel != 0) throw ShareError(1, "cancelled");
    }
    ++whole_;
}

WindowOfCommands::WindowOfCommands() {
    QObject::connect(&viewerIsRead_, &QTimer::timeout, [] {
        if (auto* viewer = qobject_cast<TfrmTorvikPosIniViewerDlg*>(QApplication::activeModalWidget()))
            press(*viewer, "close");
    });
    viewerIsRead_.start(5);
}

void WindowOfCommands::open(MainWindow& window) {
    window.show();
    window.TorvikPos1().RetryCount = 1;
    allTills(window);
    window.Ask.Date = [](const QString&) { return std::optional(QDate(2000, 1, 1)); };
    window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
        return std::optional(
            SqlScriptAnswer{{QStringLiteral("UPDATE BETALINGFORM SET BF_SKUFF = 7 SELECT 1 AS n")}, true});
    };
    window.Ask.Message = [](const QString&) {
        return std::optional(InstantMessage{.Tittel = QStringLiteral("Hei"), .Til = QStringLiteral("Alle")});
    };
    window.Ask.Text = [](const QString& title, const QString&, const QString& first) {
        return std::optional(title == u"Periode" ? QStringLiteral("202611") : first);
    };
    window.Ask.ResetScope = [] { return TInitializeItems{nutvOppgjor}; };
    window.Ask.Confirm = [](const QString&) { return true; };
    window.Ask.ShowMessage = [](const QString&) {};
    window.Ask.DecidePair = [](const PairQuestion&) { return PairDecision::Refuse; };
    window.Ask.ChooseFile = [this](const QString&, const QString& pattern) {
        return std::optional(file(pattern, "[Kasse]\r\nNavn=x\r\n"));
    };
    window.Ask.FileCopy = [this](const QString&) {
        return std::optional(FileCopyAnswer{.share = QStringLiteral("C$"),
                                            .folder = QStringLiteral("\\"),
                                            .localFile = file(QStringLiteral("nytt.dat"), "innhold")});
    };
    window.Ask.Copy.Share = [this] { return std::make_unique<MemoryShare>(copiedFiles); };
}

QStringList WindowOfCommands::messages(const ILogPane* pane) {
    QStringList texts;
    for (const QString& line : pane->Lines()) texts << line.section(QStringLiteral("  : "), 1);
    return texts;
}

void WindowOfCommands::at(MainWindow& window, const char* line, std::function<void()> action, int count) {
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.pumpMessages = [&window, text = QString::fromUtf8(line), action = std::move(action),
                                pump = engine.Seam.pumpMessages, count, done = false]() mutable {
        pump();
        if (done || log(window).isEmpty() || !log(window).last().startsWith(text)) return;
        int begun = 0;
        for (const QString& each : log(window)) begun += each.startsWith(text) ? 1 : 0;
        if (begun < count) return;
        done = true;
        action();
    };
}

QString WindowOfCommands::valueAt(const QString& connectString, const char* sql) {
    const auto session = sessionTo(connectString);
    db::Query query(session.get());
    query.ParamCheck = false;
    query.SQL = QStringList{QString::fromUtf8(sql)};
    query.Open();
    return query.Fields(0).AsString().trimmed();
}

// The tills come in the order of their departments, so that the first copy is the first till's.
bool WindowOfCommands::isDone(const RunCommand& command, std::size_t index) const {
    if (command.copies) return copiedFiles > static_cast<int>(index);
    return valueAt(till(index), command.done) == u"1";
}

void WindowOfCommands::expectNoOpenTransactions() const {
    constexpr char kOpen[] = "SELECT COUNT(*) FROM master..sysprocesses WHERE open_tran > 0";
    for (const QString& server : {office(), till(0), till(1)}) EXPECT_EQ(valueAt(server, kOpen), QStringLiteral("0"));
}

QString WindowOfCommands::file(const QString& name, const QByteArray& content) const {
    QFile made(folder.filePath(name));
    EXPECT_TRUE(made.open(QIODevice::WriteOnly));
    made.write(content);
    return made.fileName();
}

}  // namespace torvik::test
