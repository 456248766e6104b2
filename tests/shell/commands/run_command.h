// The window's commands that work on tills, as tests press them: a row each with what the operator answers, what its
// log says and what it leaves at a till. The table stands in run_command_rows.cpp, and a command of the window without
// a row in it fails a test.
#pragma once

#include <QTimer>
#include <functional>
#include <span>

#include "fleet/share/file_share.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"

namespace torvik::test {

struct RunCommand {
    const char* action;
    const char* middle;       // the beginning of a line of its log that comes once at each till
    const char* last;         // of its log, when all has gone well
    const char* unreachable;  // in the error pane when till 102/1 is away; kStatusAlone, kDriversWords
    const char* done;  // asked at a till: 1 when the command has done its work there, else 0; null: leaves nothing
    const char* before = nullptr;   // at each till beforehand, so that it is 0
    bool failsWithoutWork = false;  // a till that has nothing for it has error lines: required
    bool copies = false;            // its work is a copy to the till's share
    bool locksOffice = false;  // it is the back office that a lock holds it up at: a till in a transaction is refused
};

inline constexpr char kStatusAlone[] = "";    // no line: the till's row and its story tell
inline constexpr char kDriversWords[] = "?";  // one line, in the driver's words

[[nodiscard]] std::span<const RunCommand> runCommands();
[[nodiscard]] const RunCommand& runCommand(const char* action);
void PrintTo(const RunCommand& command, std::ostream* out);

// Takes every file, and keeps which have come whole.
class MemoryShare : public FileShare {
public:
    explicit MemoryShare(int& whole) : whole_(whole) {}
    void connect(const std::string&, const ShareLogin&) override {}
    void copy(const std::string& localFile, const std::string& target, const ShareProgress& progress,
              const int& cancel) override;
    void remove(const std::string&) override {}
    void disconnect(const std::string&) override {}

private:
    int& whole_;
};

// A window over two tills, in which each command finds its answers.
class WindowOfCommands : public WindowOverAChain {
protected:
    WindowOfCommands();

    // Shows the window and gives the operator's answers; both tills are chosen.
    void open(MainWindow& window);
    [[nodiscard]] static QStringList messages(const ILogPane* pane);
    [[nodiscard]] static QStringList log(MainWindow& window) { return messages(window.TorvikPos1().Log); }
    [[nodiscard]] static QStringList errors(MainWindow& window) { return messages(window.TorvikPos1().ErrorLog); }
    // Does this once, when so many lines of the log have begun so and the last one does.
    static void at(MainWindow& window, const char* line, std::function<void()> action, int count = 1);
    [[nodiscard]] static QString valueAt(const QString& connectString, const char* sql);
    [[nodiscard]] QString office() const { return backOfficeString(chain); }
    [[nodiscard]] QString till(std::size_t index) const { return tillString(chain, index); }
    // Whether the command has done its work at the till.
    [[nodiscard]] bool isDone(const RunCommand& command, std::size_t till) const;
    void expectNoOpenTransactions() const;
    int copiedFiles = 0;

private:
    QString file(const QString& name, const QByteArray& content) const;

    QTimer viewerIsRead_;  // the ini viewer stays until somebody closes it
};

}  // namespace torvik::test
