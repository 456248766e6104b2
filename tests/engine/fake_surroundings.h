// A clock, a tick count and a message loop that only move when the engine waits, and an engine standing on them.
#pragma once

#include <QTemporaryDir>
#include <functional>
#include <vector>

#include "engine/torvik_pos.h"
#include "tests/support/qt_print.h"

namespace torvik::test {

struct FakeSurroundings {
    QDateTime now{QDate(2026, 3, 4), QTime(5, 6, 7)};  // a Wednesday
    qint64 ticks = 1000;
    std::vector<int> sleeps;
    int pumps = 0;
    std::function<void()> onPump;  // a command that the message loop brings
    QTemporaryDir folder;

    void pass(int milliseconds) {
        ticks += milliseconds;
        now = now.addMSecs(milliseconds);
    }
    void pump() {
        ++pumps;
        if (onPump) onPump();
    }

    [[nodiscard]] Seams seams() {
        Seams seams;
        seams.now = [this] { return now; };
        seams.tickCount = [this] { return ticks; };
        seams.sleep = [this](int milliseconds) {
            sleeps.push_back(milliseconds);
            pass(milliseconds);
        };
        seams.pumpMessages = [this] { pump(); };
        seams.pumpFor = [this](int milliseconds) {
            pass(milliseconds);
            pump();
        };
        seams.tempFolder = [this] { return folder.path(); };
        return seams;
    }
};

struct FakeEngine {
    FakeSurroundings around;
    TTorvikPos engine{nullptr, around.seams()};
    StringListPane log;
    StringListPane errors;

    FakeEngine() {
        engine.Log = &log;
        engine.ErrorLog = &errors;
    }

    // The log's lines without their times.
    [[nodiscard]] QStringList messages() const { return withoutTimes(log.Lines()); }
    [[nodiscard]] QStringList errorMessages() const { return withoutTimes(errors.Lines()); }

private:
    static QStringList withoutTimes(const QStringList& lines) {
        QStringList messages;
        for (const QString& line : lines) messages.append(line.mid(QStringLiteral("dd.mm.yyyy hh:mm:ss  : ").size()));
        return messages;
    }
};

}  // namespace torvik::test
