#include "shell/status_view.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "engine/status/oppgjor_status.h"
#include "shell/status_tree_model.h"

namespace torvik {

namespace {

constexpr int kPreviewLines = 4;
constexpr int kStatusWidth = 72;
constexpr int kFitAfterMs = 500;
constexpr Qt::Alignment kCaptionAlignment = Qt::AlignLeft | Qt::AlignVCenter | Qt::Alignment(Qt::TextWordWrap);
constexpr int kCaptionMargin = 8;

// The width that a caption takes on two lines.
int twoLineWidth(const QFontMetrics& font, const QString& caption) {
    int width = font.horizontalAdvance(caption);
    for (qsizetype blank = caption.indexOf(u' '); blank >= 0; blank = caption.indexOf(u' ', blank + 1))
        width = std::min(width, std::max(font.horizontalAdvance(caption.first(blank)),
                                         font.horizontalAdvance(caption.sliced(blank + 1))));
    return width + 2 * kCaptionMargin;
}

}  // namespace

StatusView::StatusView(TfraOppgjorStatus& status, QWidget* parent)
    : QWidget(parent),
      status_(status),
      model_(new StatusTreeModel(status, this)),
      tree_(new QTreeView(this)),
      fit_(new QTimer(this)),
      melding_(new QPlainTextEdit(this)),
      sums_(new QLabel(this)),
      empty_(new QLabel(TfraOppgjorStatus::NoDataText(), tree_)) {
    tree_->setObjectName(QStringLiteral("statusTree"));
    tree_->setModel(model_);
    tree_->setUniformRowHeights(true);
    tree_->setAlternatingRowColors(true);
    tree_->header()->setResizeContentsPrecision(0);
    tree_->header()->setDefaultAlignment(kCaptionAlignment);
    tree_->header()->setMinimumHeight(2 * tree_->header()->fontMetrics().lineSpacing() + kCaptionMargin);
    tree_->header()->resizeSection(StatusTreeModel::Status, kStatusWidth);
    fit_->setSingleShot(true);
    fit_->setInterval(kFitAfterMs);
    fitColumns();
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setEnabled(false);
    (new QVBoxLayout(tree_->viewport()))->addWidget(empty_);

    auto* options = new QGroupBox(TfraOppgjorStatus::ViewOptionsCaption(), this);
    auto* errorsOnly = new QCheckBox(TfraOppgjorStatus::ErrorsOnlyCaption(), options);
    errorsOnly->setObjectName(QStringLiteral("errorsOnly"));
    auto* optionsLayout = new QHBoxLayout(options);
    optionsLayout->addWidget(errorsOnly);
    optionsLayout->addStretch();

    sums_->setObjectName(QStringLiteral("sums"));
    sums_->setAlignment(Qt::AlignRight);
    melding_->setReadOnly(true);
    melding_->setPlaceholderText(QStringLiteral("Meldinger for den valgte kassen"));
    melding_->setObjectName(QStringLiteral("melding"));
    melding_->setMaximumHeight(melding_->fontMetrics().lineSpacing() * (kPreviewLines + 1));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(options);
    layout->addWidget(tree_, 1);
    layout->addWidget(sums_);
    layout->addWidget(melding_);

    connect(errorsOnly, &QCheckBox::toggled, this, [this](bool on) { status_.SetErrorsOnly(on); });
    connect(&status_, &TfraOppgjorStatus::RowExpanded, this, [this](int row) { tree_->expand(model_->indexOf(row)); });
    connect(&status_, &TfraOppgjorStatus::AllExpanded, this, &StatusView::expandTills);
    connect(&status_, &TfraOppgjorStatus::AllCollapsed, tree_, &QTreeView::collapseAll);
    connect(&status_, &TfraOppgjorStatus::RefreshWanted, this, [this] { repaint(); });
    connect(&status_, &TfraOppgjorStatus::CurrentRowChanged, this, &StatusView::showMelding);
    connect(model_, &QAbstractItemModel::modelReset, this, [this] {
        for (int till = 0; till < model_->rowCount(); ++till) spanLines(model_->index(till, 0), 0);
        expandTills();
        showSums();
        showMelding();
    });
    connect(model_, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& till, int first) {
        if (till.isValid()) {
            spanLines(till, first);
        } else {
            spanLines(model_->index(first, 0), 0);
            showSums();
            fitSoon();
        }
    });
    connect(model_, &QAbstractItemModel::dataChanged, this, [this] {
        showSums();
        showMelding();
        fitSoon();
    });
    connect(fit_, &QTimer::timeout, this, &StatusView::fitColumns);
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

// A log line is shown over all columns.
void StatusView::spanLines(const QModelIndex& till, int first) {
    for (int line = first; line < model_->rowCount(till); ++line) tree_->setFirstColumnSpanned(line, till, true);
}

// Only those that are not: the tree lists all rows anew for each.
void StatusView::expandTills() {
    for (int till = 0; till < model_->rowCount(); ++till) {
        const QModelIndex row = model_->index(till, 0);
        if (model_->rowCount(row) > 0 && !tree_->isExpanded(row)) tree_->expand(row);
    }
}

void StatusView::fitSoon() {
    if (!fit_->isActive()) fit_->start();
}

// Now and then, and by the rows in sight: a header that follows each change by itself measures every row each time. The
// first column holds the log lines too, and must not grow with them. Small numbers under long captions get no more than
// the caption takes on two lines.
void StatusView::fitColumns() {
    for (int column = StatusTreeModel::Status + 1; column < StatusTreeModel::ColumnCount; ++column) {
        if (column == StatusTreeModel::IkkeOppgjort || column == StatusTreeModel::Backup) {
            const QString caption = model_->headerData(column, Qt::Horizontal).toString();
            tree_->header()->resizeSection(column, twoLineWidth(tree_->header()->fontMetrics(), caption));
        } else {
            tree_->resizeColumnToContents(column);
        }
    }
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
