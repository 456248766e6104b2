// One log pane: a note that says what it shows, and the lines. The engine writes it through ILogPane.
#pragma once

#include <QWidget>

#include "engine/log/log_pane.h"

class QTextEdit;

namespace torvik {

class LogPaneView : public QWidget, public ILogPane {
    Q_OBJECT

public:
    LogPaneView(const QString& note, QWidget* parent = nullptr);

    void AddLine(const QString& line) override;
    [[nodiscard]] QStringList Lines() const override { return lines_; }
    void Clear() override;
    void SetColor(PaneColor color) override { color_ = color; }

    // The pane as rich text (RTF 1.5), with its colours; raises EngineError when the file cannot be written.
    void SaveRichText(const QString& path) const;

Q_SIGNALS:
    void lineCountChanged(int lines);

private:
    QTextEdit* edit_;
    QStringList lines_;
    QList<bool> red_;
    PaneColor color_ = PaneColor::Normal;
};

}  // namespace torvik
