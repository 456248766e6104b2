// One log pane: a note that says what it shows, and the last lines of the log. The engine writes it through ILogPane;
// the whole log is kept beside the widget, and the saved files and the count come from there.
#pragma once

#include <QWidget>

#include "engine/log/log_pane.h"
#include "engine/log/whole_log.h"

class QPlainTextEdit;

namespace torvik {

class LogPaneView : public QWidget, public ILogPane {
    Q_OBJECT

public:
    static constexpr int kLinesShown = 20000;

    LogPaneView(const QString& note, QWidget* parent = nullptr);

    void AddLine(const QString& line) override;
    [[nodiscard]] QStringList Lines() const override { return log_.Lines(); }
    void Clear() override;
    void SetColor(PaneColor color) override { color_ = color; }

    // The whole log as rich text, with its colours; raises EngineError when the file cannot be written.
    void SaveRichText(const QString& path) const;

Q_SIGNALS:
    void lineCountChanged(int lines);  // of the whole log

private:
    QPlainTextEdit* edit_;
    WholeLog log_;
    PaneColor color_ = PaneColor::Normal;
};

}  // namespace torvik
