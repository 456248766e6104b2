// The boxes are a table of data, in the order in which they are shown.
#include "shell/dialogs/nullstill_utvalg.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

#include "shell/dialogs/ok_avbryt.h"

namespace torvik {

namespace {

struct BoxRow {
    const char* name;
    const char* label;
    TInitializeItem item;
    bool always;  // ticked, and not to be changed
};
constexpr BoxRow kBoxes[] = {
    {"cbSalg", "Salg og oppgjør", nutvOppgjor, true},
    {"cbVare", "Vare register", nutvVare, false},
    {"cbKunde", "Kunde register", nutvKunde, false},
    {"cbAnsatt", "Ekspeditør register", nutvAnsatt, false},
};

}  // namespace

TfrmNullstillUtvalg::TfrmNullstillUtvalg(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("TfrmNullstillUtvalg"));
    setWindowTitle(QStringLiteral("Nullstilling av kasse"));
    auto* group = new QGroupBox(QStringLiteral("Oppgi omfang av nullstilling "), this);
    auto* inGroup = new QVBoxLayout(group);
    for (const BoxRow& row : kBoxes) {
        auto* box = new QCheckBox(QString::fromUtf8(row.label), group);
        box->setObjectName(QString::fromUtf8(row.name));
        box->setChecked(row.always);
        box->setEnabled(!row.always);
        if (row.always) box->setToolTip(QStringLiteral("Salg og oppgjør tømmes alltid"));
        inGroup->addWidget(box);
    }
    auto* synchronise = new QLabel(QStringLiteral("Data må synkroniseres til kasse før den brukes."), this);
    synchronise->setObjectName(QStringLiteral("synchronise"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(group);
    layout->addWidget(synchronise);
    layout->addWidget(okAndAvbryt(*this));
    synchronise->hide();
}

TInitializeItems TfrmNullstillUtvalg::Execute() {
    if (exec() != QDialog::Accepted) return {};
    TInitializeItems items;
    for (const BoxRow& row : kBoxes)
        if (findChild<QCheckBox*>(QString::fromUtf8(row.name))->isChecked()) items.insert(row.item);
    return items;
}

}  // namespace torvik
