#include "shell/dialogs/pair_decision_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace torvik {

namespace {

struct AnswerRow {
    const char* name;
    const char* label;
    PairDecision decision;
    const char* toolTip;
};

constexpr AnswerRow kAnswers[] = {
    {"takeBack", "Ta tilbake på kassen", PairDecision::TakeBack,
     "Merkene på kassen tas tilbake, og alt hentes på nytt. Riktig når back office ikke har det."},
    {"letStand", "La kassen stå som den er", PairDecision::LetStand,
     "Ingenting endres på kassen, og det som mangler i back office, hentes ikke. Riktig når back office har det."},
    {"refuse", "Ikke nå", PairDecision::Refuse, "Kassen betjenes ikke. Spørsmålet kommer igjen neste gang."},
};

constexpr char kCannotTakeBack[] =
    "Notatet om hva som ble merket, er på den andre maskinen. Kjør programmet der for å ta det tilbake.";

QLabel* wrapped(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QPlainTextEdit* readOnlyLines(const char* name, const QStringList& lines) {
    auto* pane = new QPlainTextEdit(lines.join(u'\n'));
    pane->setObjectName(QString::fromUtf8(name));
    pane->setReadOnly(true);
    pane->setTabChangesFocus(true);
    return pane;
}

}  // namespace

PairDecisionDialog::PairDecisionDialog(const PairQuestion& question, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Avbrutt innhenting"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        wrapped(QStringLiteral("Maskin %1 begynte på %2 for avdeling %3, kasse %4 den %5 og har ikke fullført. Kassen "
                               "kan ikke betjenes før det er avklart. Helst ved å kjøre programmet på den maskinen.")
                    .arg(question.Machine, question.What, question.Avdeling, question.Kassenr, question.Began)));
    layout->addWidget(new QLabel(QStringLiteral("Kassen:")));
    layout->addWidget(readOnlyLines("till", question.Till));
    layout->addWidget(new QLabel(QStringLiteral("Back office:")));
    layout->addWidget(readOnlyLines("backOffice", question.BackOffice));

    auto* buttons = new QDialogButtonBox;
    for (const AnswerRow& row : kAnswers) {
        auto* button = buttons->addButton(QString::fromUtf8(row.label), QDialogButtonBox::ActionRole);
        button->setObjectName(QString::fromUtf8(row.name));
        button->setToolTip(QString::fromUtf8(row.toolTip));
        button->setAutoDefault(false);
        if (row.decision == PairDecision::TakeBack && !question.CanTakeBack) {
            button->setEnabled(false);
            button->setToolTip(QString::fromUtf8(kCannotTakeBack));
        }
        if (row.decision == PairDecision::Refuse) {
            button->setDefault(true);
            button->setFocus();
        }
        connect(button, &QPushButton::clicked, this, [this, decision = row.decision] {
            decision_ = decision;
            accept();
        });
    }
    layout->addWidget(buttons);
    resize(640, 380);
}

PairDecision PairDecisionDialog::Execute() {
    decision_ = PairDecision::Refuse;
    exec();
    return decision_;
}

}  // namespace torvik
