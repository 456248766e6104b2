#include "shell/status/till_story_dialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace torvik {

namespace {

constexpr QSize kSize(680, 460);

}  // namespace

TillStoryDialog::TillStoryDialog(const TillStory& story, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("TillStoryDialog"));
    setWindowTitle(story.Title);
    setAttribute(Qt::WA_DeleteOnClose);
    auto* title = new QLabel(story.Title + QStringLiteral(": ") + story.State, this);
    title->setObjectName(QStringLiteral("title"));
    title->setTextFormat(Qt::PlainText);
    title->setWordWrap(true);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* pane = new QTextEdit(this);
    pane->setObjectName(QStringLiteral("story"));
    pane->setReadOnly(true);
    pane->setTabChangesFocus(true);
    pane->setHtml(story.html());

    auto* buttons = new QDialogButtonBox(this);
    auto* copy = buttons->addButton(QStringLiteral("Kopier"), QDialogButtonBox::ActionRole);
    copy->setObjectName(QStringLiteral("copy"));
    copy->setToolTip(QStringLiteral("Hele historien som tekst til utklippstavlen"));
    copy->setAutoDefault(false);
    auto* close = buttons->addButton(QStringLiteral("Lukk"), QDialogButtonBox::RejectRole);
    close->setObjectName(QStringLiteral("close"));
    close->setDefault(true);
    connect(copy, &QPushButton::clicked, this, [text = story.text()] { QGuiApplication::clipboard()->setText(text); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(pane);
    layout->addWidget(buttons);
    resize(kSize);
    close->setFocus();
}

}  // namespace torvik
