#include "shell/settings_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

#include "engine/torvik_pos.h"
#include "shell/settings.h"

namespace torvik {

namespace {

QCheckBox* box(const char* name, const QString& label, bool ticked = false) {
    auto* check = new QCheckBox(label);
    check->setObjectName(QString::fromUtf8(name));
    check->setChecked(ticked);
    return check;
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets) {
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets) layout->addWidget(widget);
    layout->addStretch();
    return layout;
}

}  // namespace

SettingsPanel::SettingsPanel(TTorvikPos& torvikPos, QWidget* parent)
    : QWidget(parent),
      torvikPos_(torvikPos),
      cbAutoStart(box("cbAutoStart", QStringLiteral("Automatisk start kl."))),
      edStartTime(new QTimeEdit(QTime(4, 0))),
      edTimeout(new QSpinBox),
      cbSisteForst(box("cbSisteForst", QStringLiteral("Hent siste butikk først"))),
      cbBrukPlukkprioritet(box("cbBrukPlukkprioritet", QStringLiteral("Ta hensyn til plukkprioritet"))),
      cbKunHent(box("cbKunHent", QStringLiteral("Kun hent (ikke send)"))),
      cbIncludeTelling(box("cbIncludeTelling", QStringLiteral("Ta med varetellinger, og bruk periode (YYYYMM):"))),
      edVt_Periode(new QLineEdit(torvikPos.Seam.now().toString(QStringLiteral("yyyyMM")))),
      cbIncludeSladrerull(box("cbIncludeSladrerull", QStringLiteral("Bruk DTS (må være installert)"), true)),
      cbEndrevarenr(box("cbEndrevarenr", QStringLiteral("Hvis ikke varenr. finnes i Torvik, endre til:"))),
      edReplaceVa_Id(new QLineEdit),
      cbKunOppgjor(box("cbKunOppgjor", QStringLiteral("Hent kun oppgjør (ikke priser osv.)"))),
      cbTaMedMersalgVare(box("cbTaMedMersalgVare", QStringLiteral("Ta med ekstrasalg"), true)),
      cbFlagVareAfterUpdate(
          box("cbFlagVareAfterUpdate", QStringLiteral("Sett \"Send til kasse\" av etter oppdatering"))),
      cbUseThreads(box("cbUseThreads", QStringLiteral("Tillat flere tråder (threads)"))),
      cbVarer(new QComboBox),
      seDagerSidenEndring(new QSpinBox) {
    edStartTime->setObjectName(QStringLiteral("edStartTime"));
    edStartTime->setDisplayFormat(QStringLiteral("HH:mm"));
    edTimeout->setObjectName(QStringLiteral("edTimeout"));
    edTimeout->setRange(1, 3600);
    edTimeout->setValue(5);
    edTimeout->setSuffix(QStringLiteral(" s"));
    edVt_Periode->setObjectName(QStringLiteral("edVt_Periode"));
    edReplaceVa_Id->setObjectName(QStringLiteral("edReplaceVa_Id"));
    edReplaceVa_Id->setEnabled(false);
    cbVarer->setObjectName(QStringLiteral("cbVarer"));
    cbVarer->addItems({QStringLiteral("Ingen"), QStringLiteral("Bare endringer"), QStringLiteral("Alle varer")});
    cbVarer->setCurrentIndex(2);
    seDagerSidenEndring->setObjectName(QStringLiteral("seDagerSidenEndring"));
    seDagerSidenEndring->setRange(0, 9999);
    seDagerSidenEndring->setEnabled(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(automaticGroup());
    layout->addWidget(fetchGroup());
    layout->addWidget(sendGroup());
    layout->addStretch();
    followEnterprise();
}

QWidget* SettingsPanel::automaticGroup() {
    auto* group = new QGroupBox(QStringLiteral("Automatisk jobb"));
    auto* layout = new QVBoxLayout(group);
    layout->addLayout(row({cbAutoStart, edStartTime}));
    layout->addWidget(cbKunHent);
    layout->addLayout(row({new QLabel(QStringLiteral("Tidsavbrudd:")), edTimeout}));

    connect(edStartTime, &QTimeEdit::timeChanged, this, [this](QTime time) { torvikPos_.StartTime = time; });
    connect(cbKunHent, &QCheckBox::toggled, this, [this](bool on) { torvikPos_.ReceiveDataOnly = on; });
    connect(edTimeout, &QSpinBox::valueChanged, this, [this](int seconds) { torvikPos_.RetryWaitTime = seconds; });
    connect(cbAutoStart, &QCheckBox::toggled, this, [this](bool on) {
        torvikPos_.StartTime = edStartTime->time();
        torvikPos_.SetAutoCommunicate(on);
        torvikPos_.IncludeCreditCouponOnOppgjor = torvikPos_.IsEnterprise;
        torvikPos_.IncludeGiftVoucherOnOppgjor = torvikPos_.IsEnterprise;
        apply();
        Q_EMIT autoStartChanged(on);
    });
    return group;
}

QWidget* SettingsPanel::fetchGroup() {
    auto* group = new QGroupBox(QStringLiteral("Innhenting"));
    auto* layout = new QVBoxLayout(group);
    for (QCheckBox* check : {cbSisteForst, cbBrukPlukkprioritet, cbIncludeSladrerull, cbKunOppgjor})
        layout->addWidget(check);
    layout->addWidget(cbEndrevarenr);
    layout->addWidget(edReplaceVa_Id);
    layout->addWidget(cbIncludeTelling);
    layout->addWidget(edVt_Periode);

    connect(cbSisteForst, &QCheckBox::toggled, this, [this](bool on) { torvikPos_.ReverseProcessingOrder = on; });
    connect(cbBrukPlukkprioritet, &QCheckBox::toggled, this, [this](bool on) { torvikPos_.UsePlukkPrioritet = on; });
    connect(cbIncludeSladrerull, &QCheckBox::toggled, this, [this](bool on) { torvikPos_.IncludeDTS_TorvikPOS = on; });
    connect(cbKunOppgjor, &QCheckBox::toggled, this,
            [this](bool on) { torvikPos_.OnlyOppgjor = on && !torvikPos_.IsEnterprise; });
    connect(cbEndrevarenr, &QCheckBox::toggled, this, [this](bool on) {
        edReplaceVa_Id->setEnabled(on);
        if (!on) edReplaceVa_Id->clear();
    });
    connect(cbIncludeTelling, &QCheckBox::toggled, this,
            [this](bool on) { torvikPos_.IncludeVaretellingOnOppgjor = on; });
    connect(edVt_Periode, &QLineEdit::textChanged, this,
            [this](const QString& text) { torvikPos_.VaretellingPeriode = text; });
    connect(edReplaceVa_Id, &QLineEdit::textChanged, this,
            [this](const QString& text) { torvikPos_.ReplacementVa_Id = text; });
    return group;
}

QWidget* SettingsPanel::sendGroup() {
    auto* group = new QGroupBox(QStringLiteral("Utsending"));
    auto* layout = new QVBoxLayout(group);
    layout->addLayout(row({new QLabel(QStringLiteral("Varer:")), cbVarer}));
    layout->addLayout(row({new QLabel(QStringLiteral("Ant. dager:")), seDagerSidenEndring}));
    layout->addWidget(cbTaMedMersalgVare);
    layout->addWidget(cbFlagVareAfterUpdate);
    layout->addWidget(cbUseThreads);
    cbUseThreads->hide();

    connect(cbVarer, &QComboBox::currentIndexChanged, this, [this](int index) {
        torvikPos_.VareOppdateringUtvalg = static_cast<TVareOppdateringUtvalg>(index);
        seDagerSidenEndring->setEnabled(index == vopEndrede);
    });
    connect(seDagerSidenEndring, &QSpinBox::valueChanged, this,
            [this](int days) { torvikPos_.DagerSidenEndring = days; });
    connect(cbTaMedMersalgVare, &QCheckBox::toggled, this,
            [this](bool on) { torvikPos_.IncludeExtraSaleProducts = on; });
    connect(cbFlagVareAfterUpdate, &QCheckBox::toggled, this,
            [this](bool on) { torvikPos_.FlagAsSentAfterUpdate = on; });
    connect(cbUseThreads, &QCheckBox::clicked, this, [this](bool on) { torvikPos_.AllowMultiThreading = on; });
    return group;
}

// Fetching settlements only is a choice of a single back office.
void SettingsPanel::followEnterprise() {
    cbKunOppgjor->setVisible(!torvikPos_.IsEnterprise);
}

void SettingsPanel::apply() {
    torvikPos_.StartTime = edStartTime->time();
    torvikPos_.RetryWaitTime = edTimeout->value();
    torvikPos_.ReceiveDataOnly = cbKunHent->isChecked();
    torvikPos_.ReverseProcessingOrder = cbSisteForst->isChecked();
    torvikPos_.UsePlukkPrioritet = cbBrukPlukkprioritet->isChecked();
    torvikPos_.IncludeVaretellingOnOppgjor = cbIncludeTelling->isChecked();
    torvikPos_.VaretellingPeriode = edVt_Periode->text();
    torvikPos_.IncludeDTS_TorvikPOS = cbIncludeSladrerull->isChecked();
    torvikPos_.OnlyOppgjor = cbKunOppgjor->isChecked() && !torvikPos_.IsEnterprise;
    torvikPos_.ReplacementVa_Id = edReplaceVa_Id->text();
    torvikPos_.VareOppdateringUtvalg = static_cast<TVareOppdateringUtvalg>(cbVarer->currentIndex());
    torvikPos_.DagerSidenEndring = seDagerSidenEndring->value();
    torvikPos_.IncludeExtraSaleProducts = cbTaMedMersalgVare->isChecked();
    torvikPos_.FlagAsSentAfterUpdate = cbFlagVareAfterUpdate->isChecked();
}

void SettingsPanel::read(const SettingsStore& store, bool dtsCompatible) {
    cbEndrevarenr->setChecked(store.read("ReplaceProductNoOnNoExist").toBool());
    edReplaceVa_Id->setText(store.read("ReplacementProductNo").toString());
    edTimeout->setValue(store.read("Timeout").toInt());
    edStartTime->setTime(store.read("AutoStartTime").toTime());
    const int products = store.read("ProductsToSync").toInt();
    if (products >= 0 && products < cbVarer->count()) cbVarer->setCurrentIndex(products);
    cbKunHent->setChecked(store.read("KunHent").toBool());
    cbSisteForst->setChecked(store.read("HentSisteForst").toBool());
    cbIncludeSladrerull->setEnabled(dtsCompatible);
    cbIncludeSladrerull->setChecked(dtsCompatible && store.read("IncludeDTS").toBool());
    cbBrukPlukkprioritet->setChecked(store.read("PlukkPrioritet").toBool());
    seDagerSidenEndring->setValue(store.read("ChangeNumberOfDays").toInt());
    apply();
    cbAutoStart->setChecked(store.read("cbAutoStart").toBool());
}

void SettingsPanel::write(SettingsStore& store) const {
    store.write("ReplaceProductNoOnNoExist", cbEndrevarenr->isChecked());
    store.write("ReplacementProductNo", edReplaceVa_Id->text());
    store.write("Timeout", edTimeout->value());
    store.write("AutoStartTime", edStartTime->time());
    store.write("ProductsToSync", cbVarer->currentIndex());
    store.write("KunHent", cbKunHent->isChecked());
    store.write("HentSisteForst", cbSisteForst->isChecked());
    store.write("IncludeDTS", cbIncludeSladrerull->isChecked());
    store.write("PlukkPrioritet", cbBrukPlukkprioritet->isChecked());
    store.write("ChangeNumberOfDays", seDagerSidenEndring->value());
    store.write("cbAutoStart", cbAutoStart->isChecked());
}

bool SettingsPanel::autoStart() const {
    return cbAutoStart->isChecked();
}

void SettingsPanel::setAutoStart(bool on) {
    cbAutoStart->setChecked(on);
}

}  // namespace torvik
