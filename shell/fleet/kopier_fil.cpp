// The keyboard begins in the first field, and each label leads to its field.
#include "shell/fleet/kopier_fil.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/dialogs/ok_avbryt.h"

namespace torvik {

namespace {

constexpr int kFieldWidth = 420;

void add(QVBoxLayout* layout, const QString& label, QLineEdit* field) {
    auto* text = new QLabel(label);
    text->setBuddy(field);
    layout->addWidget(text);
    layout->addWidget(field);
}

}  // namespace

TfrmKopierFil::TfrmKopierFil(std::function<std::optional<QString>()> chooseFile, QWidget* parent)
    : QDialog(parent),
      chooseFile_(std::move(chooseFile)),
      teResource_(field("teResource", QStringLiteral("C$"))),
      teFolder_(field("teFolder", QStringLiteral("\\TorvikPOS\\"))),
      teLocalFile_(field("teLocalFile", QString())),
      cbOverrideUsername_(new QCheckBox(QStringLiteral("Overstyr brukernavn og passord:"), this)),
      teUserName_(field("teUserName", QString())),
      tePassword_(field("tePassword", QString())),
      lblInfo_(new QLabel(this)) {
    setObjectName(QStringLiteral("TfrmKopierFil"));
    setWindowTitle(QStringLiteral("Kopier fil til TorvikPOS"));
    cbOverrideUsername_->setObjectName(QStringLiteral("cbOverrideUsername"));
    tePassword_->setEchoMode(QLineEdit::Password);
    lblInfo_->setObjectName(QStringLiteral("lblInfo"));
    lblInfo_->setTextFormat(Qt::PlainText);
    lblInfo_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* browse = new QPushButton(QStringLiteral("..."), this);
    browse->setObjectName(QStringLiteral("browse"));
    browse->setAutoDefault(false);
    browse->setToolTip(QStringLiteral("Velg fil"));

    auto* layout = new QVBoxLayout(this);
    add(layout, QStringLiteral("Navn på \"share\" på mål PC, f.eks. C$"), teResource_);
    add(layout, QStringLiteral("Navn på katalog i \"share\" som oppgitt ovenfor"), teFolder_);
    add(layout, QStringLiteral("Navn på lokal fil som skal sendes:"), teLocalFile_);
    auto* local = new QHBoxLayout;
    layout->removeWidget(teLocalFile_);
    local->addWidget(teLocalFile_);
    local->addWidget(browse);
    layout->addLayout(local);
    layout->addWidget(cbOverrideUsername_);
    add(layout, QStringLiteral("Brukernavn:"), teUserName_);
    add(layout, QStringLiteral("Passord"), tePassword_);
    layout->addWidget(new QLabel(QStringLiteral("Filen kopieres til:"), this));
    layout->addWidget(lblInfo_);
    layout->addWidget(okAndAvbryt(*this));
    setTabOrder(teLocalFile_, browse);  // it stands beside the field

    connect(browse, &QPushButton::clicked, this, &TfrmKopierFil::chooseLocalFile);
    connect(cbOverrideUsername_, &QCheckBox::toggled, this, &TfrmKopierFil::setOverride);
    for (QLineEdit* each : {teResource_, teFolder_, teLocalFile_})
        connect(each, &QLineEdit::textChanged, this, &TfrmKopierFil::showTarget);
    setOverride(false);
    showTarget();
}

QLineEdit* TfrmKopierFil::field(const char* name, const QString& preset) {
    auto* edit = new QLineEdit(preset, this);
    edit->setObjectName(QString::fromUtf8(name));
    edit->setMinimumWidth(kFieldWidth);
    return edit;
}

void TfrmKopierFil::chooseLocalFile() {
    if (const auto file = chooseFile_()) teLocalFile_->setText(*file);
}

void TfrmKopierFil::setOverride(bool on) {
    teUserName_->setEnabled(on);
    tePassword_->setEnabled(on);
    if (on) teUserName_->setFocus();
}

void TfrmKopierFil::showTarget() {
    lblInfo_->setText(QStringLiteral("<PC navn>\\%1%2%3")
                          .arg(teResource_->text(), teFolder_->text(), QFileInfo(teLocalFile_->text()).fileName()));
}

std::optional<FileCopyAnswer> TfrmKopierFil::Execute() {
    if (exec() != QDialog::Accepted) return std::nullopt;
    return FileCopyAnswer{.share = teResource_->text(),
                          .folder = teFolder_->text(),
                          .localFile = teLocalFile_->text(),
                          .overridesLogin = cbOverrideUsername_->isChecked(),
                          .userName = teUserName_->text(),
                          .password = tePassword_->text()};
}

}  // namespace torvik
