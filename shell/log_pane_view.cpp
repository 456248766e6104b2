// The pane keeps its lines beside the widget, so that saving them does not depend on how the widget shows them.
#include "shell/log_pane_view.h"

#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextEdit>
#include <QVBoxLayout>

#include "engine/base/abort.h"

namespace torvik {

namespace {

// RTF takes ASCII; anything else is written as its UTF-16 units.
QByteArray rtfEscaped(const QString& text) {
    QByteArray out;
    for (const QChar c : text) {
        const ushort unit = c.unicode();
        if (unit == '\\' || unit == '{' || unit == '}')
            out += QByteArray("\\") + static_cast<char>(unit);
        else if (unit < 0x80)
            out += static_cast<char>(unit);
        else
            out += "\\u" + QByteArray::number(static_cast<qint16>(unit)) + "?";
    }
    return out;
}

}  // namespace

LogPaneView::LogPaneView(const QString& note, QWidget* parent) : QWidget(parent), edit_(new QTextEdit(this)) {
    auto* label = new QLabel(note, this);
    label->setWordWrap(true);
    edit_->setReadOnly(true);
    edit_->setLineWrapMode(QTextEdit::NoWrap);
    edit_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    edit_->setObjectName(QStringLiteral("lines"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(edit_);
}

void LogPaneView::AddLine(const QString& line) {
    const bool red = color_ == PaneColor::Red;
    lines_ << line;
    red_ << red;
    const QScrollBar* bar = edit_->verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum() - 4;
    QTextCharFormat format;  // inserted as plain text: a line may hold what looks like markup
    if (red) format.setForeground(Qt::red);
    QTextCursor end(edit_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(lines_.size() == 1 ? line : QLatin1Char('\n') + line, format);
    if (atEnd) edit_->verticalScrollBar()->setValue(edit_->verticalScrollBar()->maximum());
    Q_EMIT lineCountChanged(static_cast<int>(lines_.size()));
}

void LogPaneView::Clear() {
    lines_.clear();
    red_.clear();
    edit_->clear();
    Q_EMIT lineCountChanged(0);
}

void LogPaneView::SaveRichText(const QString& path) const {
    QByteArray rtf =
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fmodern Courier New;}}{\\colortbl;\\red255\\green0\\blue0;}\\f0\\fs18\r\n";
    for (qsizetype i = 0; i < lines_.size(); ++i)
        rtf += (red_[i] ? "\\cf1 " : "\\cf0 ") + rtfEscaped(lines_[i]) + "\\par\r\n";
    rtf += "}\r\n";
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(rtf) != rtf.size() || !file.flush())
        throw EngineError(QStringLiteral("%1: %2").arg(path, file.errorString()));
}

}  // namespace torvik
