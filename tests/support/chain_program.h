// The whole program without its window: an engine with its two sessions and the fetch joined to it, on any chain whose
// back office a data link names. Waits take no time; the clock is the real one. ChainRun is one beside its chain.
#pragma once

#include <QTemporaryDir>
#include <string>

#include "engine/db/session.h"
#include "engine/log/log_pane.h"
#include "engine/torvik_pos.h"
#include "inbound/settlement/oppgjor.h"
#include "tests/support/recording_sink.h"

namespace torvik::test {

class ChainProgram {
public:
    // The notes of its pairs of transactions stand in a folder of its own unless one is given.
    explicit ChainProgram(const std::string& dataLink, const QString& noteFolder = {});
    ~ChainProgram();
    ChainProgram(const ChainProgram&) = delete;
    ChainProgram& operator=(const ChainProgram&) = delete;

    // One settlement run over all tills, from a fresh back-office session, as the command in the window does it.
    void fetch();

    // The lines of the panes, without their times.
    [[nodiscard]] QStringList errors() const;
    [[nodiscard]] QStringList log() const;

    QTemporaryDir folder;  // the temporary folder, and the working directory while this stands
    OppgjorJoinPoints joinPoints;
    RecordedLog structured;
    db::Session target;
    db::Session source;
    TTorvikPos engine;
    StringListPane logPane;
    StringListPane errorPane;

private:
    QString workingDirectory_;
};

}  // namespace torvik::test
