// The widget drops its oldest line by itself when it is full; the whole log knows nothing of that.
#include "shell/log/log_pane_view.h"

#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>

#include "engine/base/abort.h"

namespace torvik {

LogPaneView::LogPaneView(const QString& note, QWidget* parent) : QWidget(parent), edit_(new QPlainTextEdit(this)) {
    auto* label = new QLabel(note, this);
    label->setWordWrap(true);
    edit_->setReadOnly(true);
    edit_->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    edit_->setMaximumBlockCount(kLinesShown);
    edit_->setObjectName(QStringLiteral("lines"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(edit_);
}

void LogPaneView::AddLine(const QString& line) {
    log_.Add(line, color_);
    const QScrollBar* bar = edit_->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    QTextCharFormat format;  // inserted as plain text: a line may hold what looks like markup
    if (color_ == PaneColor::Red) format.setForeground(Qt::red);
    QTextCursor end(edit_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(log_.Count() == 1 ? line : QLatin1Char('\n') + line, format);
    if (atEnd) edit_->verticalScrollBar()->setValue(bar->maximum());
    Q_EMIT lineCountChanged(log_.Count());
}

void LogPaneView::Clear() {
    log_.Clear();
    edit_->clear();
    Q_EMIT lineCountChanged(0);
}

void LogPaneView::SaveRichText(const QString& path) const {
    const QByteArray rtf = log_.RichText();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(rtf) != rtf.size() || !file.flush())
        throw EngineError(QStringLiteral("%1: %2").arg(path, file.errorString()));
}

}  // namespace torvik
