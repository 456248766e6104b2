#include "shell/status_view.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTreeView>
#include <QVBoxLayout>

#include "engine/oppgjor_status.h"
#include "shell/status_tree_model.h"

namespace torvik {

namespace {

constexpr int kPreviewLines = 4;
constexpr int kStatusWidth = 72;

}  // namespace

StatusView::StatusView(TfraOppgjorStatus& status, QWidget* parent)
    : QWidget(parent),
      status_(status),
      model_(new StatusTreeModel(status, this)),
      tree_(new QTreeView(this)),
      melding_(new QPlainTextEdit(this)),
      sums_(new QLabel(this)),
      empty_(new QLabel(TfraOppgjorStatus::NoDataText(), tree_)) {
    tree_->setObjectName(QStringLiteral("statusTree"));
    tree_->setModel(model_);
    tree_->setUniformRowHeights(true);
    tree_->setAlternatingRowColors(true);
    // The first column holds the log lines too, and must not grow with them.
    for (int column = 1; column < StatusTreeModel::ColumnCount; ++column)
        tree_->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    tree_->header()->resizeSection(StatusTreeModel::Status, kStatusWidth);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setEnabled(false);

    auto* options = new QGroupBox(TfraOppgjorStatus::ViewOptionsCaption(), this);
    auto* errorsOnly = new QCheckBox(TfraOppgjorStatus::ErrorsOnlyCaption(), options);
    errorsOnly->setObjectName(QStringLiteral("errorsOnly"));
    auto* optionsLayout = new QHBoxLayout(options);
    optionsLayout->addWidget(errorsOnly);
    optionsLayout->addStretch();
    optionsLayout->addWidget(sums_);

    melding_->setReadOnly(true);
    melding_->setObjectName(QStringLiteral("melding"));
    melding_->setMaximumHeight(melding_->fontMetrics().lineSpacing() * (kPreviewLines + 1));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(options);
    layout->addWidget(tree_, 1);
    layout->addWidget(melding_);

    connect(errorsOnly, &QCheckBox::toggled, this, [this](bool on) { status_.SetErrorsOnly(on); });
    connect(&status_, &TfraOppgjorStatus::AllExpanded, tree_, &QTreeView::expandAll);
    connect(&status_, &TfraOppgjorStatus::AllCollapsed, tree_, &QTreeView::collapseAll);
    connect(&status_, &TfraOppgjorStatus::RefreshWanted, this, [this] {
        model_->follow();
        repaint();
    });
    connect(model_, &QAbstractItemModel::modelReset, this, [this] {
        showTree();
        showSums();
        showMelding();
    });
    connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
        status_.SetCurrentRow(model_->statusRow(current));
        showMelding();
    });
    connect(tree_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu menu;
        menu.addAction(TfraOppgjorStatus::ExpandAllCaption(), this, [this] { status_.ExpandAll(); });
        menu.addAction(TfraOppgjorStatus::CollapseAllCaption(), this, [this] { status_.CollapseAll(); });
        menu.exec(tree_->viewport()->mapToGlobal(at));
    });
    showSums();
}

void StatusView::showTree() {
    for (int till = 0; till < model_->rowCount(); ++till) {
        const QModelIndex parent = model_->index(till, 0);
        for (int line = 0; line < model_->rowCount(parent); ++line) tree_->setFirstColumnSpanned(line, parent, true);
    }
    tree_->expandAll();
    empty_->setVisible(model_->rowCount() == 0);
    empty_->resize(tree_->viewport()->size());
}

void StatusView::showSums() {
    const OppgjorStatusSums sums = status_.memOppgjorStatus.Sums();
    empty_->setVisible(sums.Count == 0);
    sums_->setText(QStringLiteral("Antall: %1     Ant. ikke oppgjorte salg: %2     Tid brukt: %3")
                       .arg(sums.Count)
                       .arg(sums.AntSalgIkkeOppgjort)
                       .arg(sums.TidBruktText()));
}

void StatusView::showMelding() {
    const int row = status_.CurrentRow();
    melding_->setPlainText(row >= 0 && row < status_.memOppgjorStatus.RecordCount()
                               ? status_.memOppgjorStatus.Row(row).Melding
                               : QString());
}

}  // namespace torvik
