// Rows are added while the check runs; the button says "Avbryt" until it has ended.
#include "shell/setup/setup_report.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "engine/roster/kasse_collection.h"
#include "shell/look/icons.h"

namespace torvik {

namespace {

constexpr QSize kSize(760, 460);

QIcon iconOf(CheckOutcome outcome) {
    switch (outcome) {
        case CheckOutcome::Good: return statusIcon(kls_OK);
        case CheckOutcome::Warning: return statusIcon(kls_Warning);
        case CheckOutcome::Bad: return statusIcon(kls_Error);
    }
    return {};
}

}  // namespace

SetupReport::SetupReport(QWidget* parent) : QDialog(parent), rows_(new QTreeWidget(this)), summary_(new QLabel(this)) {
    setObjectName(QStringLiteral("SetupReport"));
    setWindowTitle(QStringLiteral("Kontroller oppsett"));
    rows_->setObjectName(QStringLiteral("rows"));
    rows_->setHeaderLabels({QStringLiteral("Kontroll"), QStringLiteral("Resultat")});
    rows_->setRootIsDecorated(false);
    rows_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    summary_->setObjectName(QStringLiteral("summary"));
    summary_->setText(QStringLiteral("Kontrollerer ..."));
    auto* buttons = new QDialogButtonBox(this);
    close_ = buttons->addButton(QStringLiteral("Avbryt"), QDialogButtonBox::RejectRole);
    close_->setObjectName(QStringLiteral("close"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(rows_);
    layout->addWidget(summary_);
    layout->addWidget(buttons);
    resize(kSize);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void SetupReport::add(const CheckResult& result) {
    auto* row = new QTreeWidgetItem(rows_, {result.what, result.detail});
    row->setIcon(0, iconOf(result.outcome));
    row->setToolTip(1, result.detail);
    rows_->scrollToItem(row);
    if (result.outcome != CheckOutcome::Good) ++bad_;
}

void SetupReport::finish() {
    finished_ = true;
    summary_->setText(bad_ == 0 ? QStringLiteral("Alt er i orden")
                                : QStringLiteral("%1 av %2 må ses på").arg(bad_).arg(rows_->topLevelItemCount()));
    close_->setText(QStringLiteral("Lukk"));
}

void SetupReport::reject() {
    if (!finished_) Q_EMIT abandoned();
    QDialog::reject();
}

}  // namespace torvik
