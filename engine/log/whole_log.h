// All lines of a log with their colours, however few of them a pane shows: what its saved files and its line count come
// from. Lines are kept as UTF-8, half of what they take in a widget.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <deque>

#include "engine/log/log_pane.h"

namespace torvik {

class WholeLog {
public:
    void Add(const QString& line, PaneColor color) { lines_.push_back({line.toUtf8(), color}); }
    void Clear() { lines_.clear(); }
    [[nodiscard]] int Count() const { return static_cast<int>(lines_.size()); }
    [[nodiscard]] QStringList Lines() const;
    // The lines as rich text (RTF 1.5) in one font, red ones in red.
    [[nodiscard]] QByteArray RichText() const;

private:
    struct Line {
        QByteArray text;
        PaneColor color;
    };
    std::deque<Line> lines_;
};

}  // namespace torvik
