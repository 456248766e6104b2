#include "shell/fleet/ny_melding.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QFile>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "engine/base/abort.h"
#include "fleet/ini/ini_text.h"
#include "shell/dialogs/ok_avbryt.h"
#include "shell/fleet/html_pane.h"

namespace torvik {

namespace {

constexpr int kLetters = 100;
constexpr QSize kSize(640, 560);

constexpr char kStandardPage[] = R"(<html>
<body>
<p><b>TorvikPOSSync standard side</b></p>
<p>Skriv inn en melding, eller trykk på knappen</p>
<p>"Les fra fil" for å åpne et eksisterende Html dokument.</p>
</body>
</html>
)";

// In UTF-8, as its mark at the beginning says.
void writeStandardPage(const QString& file) {
    QSaveFile page(file);
    const QByteArray bytes = QByteArray("\xEF\xBB\xBF") + kStandardPage;
    if (!page.open(QIODevice::WriteOnly) || page.write(bytes) != bytes.size() || !page.commit())
        throw EngineError(QStringLiteral("Klarte ikke å skrive %1: %2").arg(file, page.errorString()));
}

}  // namespace

TfrmNyMelding::TfrmNyMelding(const QString& folder, const QDateTime& now, Asking ask, QWidget* parent)
    : QDialog(parent),
      folder_(folder),
      ask_(std::move(ask)),
      edMe_Tittel_(required("edMe_Tittel")),
      edMe_Til_(required("edMe_Til", QStringLiteral("(F.eks. Alle eller Butikksjef)"))),
      edMe_Fra_(required("edMe_Fra")),
      bodies_(new QStackedWidget(this)),
      meMelding_(new QPlainTextEdit(this)),
      cbHtml_(new QCheckBox(QStringLiteral("Send som HTML"), this)),
      cbDisplayOnPosFront_(new QCheckBox(QStringLiteral("Skal vises på TorvikPOS startskjerm"), this)),
      priorityLabel_(new QLabel(QStringLiteral("Prioritet"), this)),
      sePrioritet_(new QSpinBox(this)),
      expiryLabel_(new QLabel(QStringLiteral("Utløpstidspunkt"), this)),
      deExpiry_(new QDateTimeEdit(now.addDays(1), this)) {
    setObjectName(QStringLiteral("TfrmNyMelding"));
    setWindowTitle(QStringLiteral("Ny melding"));
    resize(kSize);
    meMelding_->setObjectName(QStringLiteral("meMelding"));
    cbHtml_->setObjectName(QStringLiteral("cbHtml"));
    cbDisplayOnPosFront_->setObjectName(QStringLiteral("cbDisplayOnPosFront"));
    sePrioritet_->setObjectName(QStringLiteral("sePrioritet"));
    sePrioritet_->setRange(1, 3);
    sePrioritet_->setValue(3);
    deExpiry_->setObjectName(QStringLiteral("deExpiry"));
    deExpiry_->setDisplayFormat(QStringLiteral("dd.MM.yyyy HH:mm"));
    deExpiry_->setCalendarPopup(true);
    meMelding_->setTabChangesFocus(true);
    bodies_->addWidget(meMelding_);

    auto* fields = new QFormLayout;
    fields->addRow(QStringLiteral("Overskrift"), edMe_Tittel_);
    fields->addRow(QStringLiteral("Til"), edMe_Til_);
    fields->addRow(QStringLiteral("Fra"), edMe_Fra_);
    fields->addRow(QStringLiteral("Melding "), bodies_);
    fields->addRow(QString(), cbHtml_);
    fields->addRow(QString(), cbDisplayOnPosFront_);
    fields->addRow(priorityLabel_, sePrioritet_);
    fields->addRow(expiryLabel_, deExpiry_);
    QDialogButtonBox* buttons = okAndAvbryt(*this);
    auto* read = buttons->addButton(QStringLiteral("Les fra fil..."), QDialogButtonBox::ActionRole);
    read->setObjectName(QStringLiteral("readFile"));
    read->setAutoDefault(false);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields, 1);
    layout->addWidget(buttons);

    const QList<QWidget*> ofStartScreen{priorityLabel_, sePrioritet_, expiryLabel_, deExpiry_};
    const auto showStartScreen = [ofStartScreen](bool on) {
        for (QWidget* each : ofStartScreen) each->setVisible(on);
    };
    showStartScreen(false);
    connect(cbDisplayOnPosFront_, &QCheckBox::toggled, this, showStartScreen);
    connect(cbHtml_, &QCheckBox::toggled, this, &TfrmNyMelding::setHtml);
    connect(read, &QPushButton::clicked, this, &TfrmNyMelding::readFile);
}

QLineEdit* TfrmNyMelding::required(const char* name, const QString& hint) {
    auto* field = new QLineEdit(this);
    field->setObjectName(QString::fromUtf8(name));
    field->setMaxLength(kLetters);
    field->setPlaceholderText(hint);
    field->setToolTip(hint);
    return field;
}

// A page that cannot be made leaves the message plain text.
void TfrmNyMelding::setHtml(bool on) {
    if (on && !page_) {
        const QString file = folder_ + QStringLiteral("TorvikPOSSync.htm");
        auto page = std::make_unique<HtmlPane>();
        try {
            writeStandardPage(file);
            page->navigate(file);
        } catch (const EngineError& e) {
            cbHtml_->setChecked(false);
            ask_.tell(ErrorText(e));
            return;
        }
        page_ = page.release();
        page_->setObjectName(QStringLiteral("page"));
        page_->setTabChangesFocus(true);
        bodies_->addWidget(page_);
        setTabOrder(meMelding_, page_);
    }
    bodies_->setCurrentWidget(on ? static_cast<QWidget*>(page_) : meMelding_);
}

void TfrmNyMelding::readFile() {
    const QString file =
        ask_.chooseFile(QStringLiteral("Åpne fil"), cbHtml_->isChecked() ? QStringLiteral("HTML filer (*.htm)")
                                                                         : QStringLiteral("Tekst filer (*.txt)"));
    if (file.isEmpty()) return;
    try {
        readFileNamed(file);
    } catch (const EngineError& e) {
        ask_.tell(ErrorText(e));
    }
}

void TfrmNyMelding::readFileNamed(const QString& file) {
    if (cbHtml_->isChecked()) {
        page_->navigate(file);
        return;
    }
    QFile text(file);
    if (!text.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Klarte ikke å lese %1: %2").arg(file, text.errorString()));
    meMelding_->setPlainText(iniLines(text.readAll()).join(u'\n'));
}

QString TfrmNyMelding::fault() const {
    if (edMe_Tittel_->text().trimmed().isEmpty()) return QStringLiteral("Meldingen må ha en tittel.");
    if (edMe_Til_->text().trimmed().isEmpty()) return QStringLiteral("Du må oppgi hvem meldingen er til.");
    if (edMe_Fra_->text().trimmed().isEmpty()) return QStringLiteral("Du må oppgi hvem meldingen er fra.");
    return {};
}

void TfrmNyMelding::accept() {
    if (const QString wrong = fault(); !wrong.isEmpty()) {
        ask_.tell(wrong);
        return;
    }
    if (ask_.confirm(QStringLiteral("Skal meldingen sendes?"))) QDialog::accept();
}

bool TfrmNyMelding::Execute() {
    return exec() == QDialog::Accepted;
}

InstantMessage TfrmNyMelding::message() const {
    return {.Tittel = edMe_Tittel_->text(),
            .Til = edMe_Til_->text(),
            .Fra = edMe_Fra_->text(),
            .Melding = cbHtml_->isChecked() ? page_->pageSource() : meMelding_->toPlainText(),
            .DisplayOnPosFront = cbDisplayOnPosFront_->isChecked(),
            .Prioritet = sePrioritet_->value(),
            .Expiry = deExpiry_->dateTime()};
}

}  // namespace torvik
