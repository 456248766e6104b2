#include "shell/fleet/html_pane.h"

#include <QFile>
#include <QStringDecoder>
#include <QUrl>

#include "engine/base/abort.h"

namespace torvik {

HtmlPane::HtmlPane(QWidget* parent) : QTextBrowser(parent) {
    setReadOnly(false);
    setUndoRedoEnabled(true);
    setOpenLinks(false);  // a link is part of the message, and leads nowhere here
}

void HtmlPane::navigate(const QString& file) {
    QFile page(file);
    if (!page.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Klarte ikke å lese %1: %2").arg(file, page.errorString()));
    const QByteArray bytes = page.readAll();
    loaded_ = QStringDecoder::decoderForHtml(bytes)(bytes);
    document()->setBaseUrl(QUrl::fromLocalFile(file));
    QTextBrowser::setHtml(loaded_);
    document()->setModified(false);
}

QString HtmlPane::pageSource() const {
    return document()->isModified() ? toHtml() : loaded_;
}

}  // namespace torvik
