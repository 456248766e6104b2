// Wires the tree, the bar and the memo to the status; what a row shows is the model's.
#include "shell/status/status_view.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QSet>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "engine/status/oppgjor_status.h"
#include "shell/status/state_bar.h"
#include "shell/status/status_export.h"
#include "shell/status/status_tree_model.h"
#include "shell/status/till_story.h"
#include "shell/status/till_story_dialog.h"

namespace torvik {

namespace {

constexpr int kPreviewLines = 4;
constexpr int kStatusWidth = 72;
constexpr int kGroupWidth = 170;  // the other columns still fit a small screen
constexpr int kWidestColumn = 240;
constexpr int kFitAfterMs = 500;
constexpr Qt::Alignment kCaptionAlignment = Qt::AlignLeft | Qt::AlignVCenter | Qt::Alignment(Qt::TextWordWrap);
constexpr int kCaptionMargin = 8;

constexpr const char* kGroupCaptions[] = {"Ingen gruppering", "Avdeling", "Status", "Hentet", "Sendt"};

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
      states_(new StateBar(this)),
      tree_(new QTreeView(this)),
      fit_(new QTimer(this)),
      melding_(new QPlainTextEdit(this)),
      sums_(new QLabel(this)),
      empty_(new QLabel(TfraOppgjorStatus::NoDataText(), tree_)) {
    AskExportFile = [this] {
        return QFileDialog::getSaveFileName(this, QStringLiteral("Eksporter til regneark"),
                                            QStringLiteral("Status.xlsx"), QStringLiteral("Regneark (*.xlsx)"));
    };
    createTree();
    sums_->setObjectName(QStringLiteral("sums"));
    sums_->setAlignment(Qt::AlignRight);
    melding_->setReadOnly(true);
    melding_->setPlaceholderText(QStringLiteral("Meldinger for den valgte kassen"));
    melding_->setObjectName(QStringLiteral("melding"));
    melding_->setTabChangesFocus(true);
    melding_->setMaximumHeight(melding_->fontMetrics().lineSpacing() * (kPreviewLines + 1));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(states_);
    layout->addWidget(createOptions());
    layout->addWidget(tree_, 1);
    layout->addWidget(sums_);
    layout->addWidget(melding_);
    connectStatus();
    connectTree();
    showCounts();
}

void StatusView::createTree() {
    tree_->setObjectName(QStringLiteral("statusTree"));
    tree_->setModel(model_);
    tree_->setUniformRowHeights(true);
    tree_->setAlternatingRowColors(true);
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    tree_->setExpandsOnDoubleClick(false);  // on a failed till a double click asks for its story
    QHeaderView* header = tree_->header();
    header->setResizeContentsPrecision(0);
    header->setDefaultAlignment(kCaptionAlignment);
    header->setMinimumHeight(2 * header->fontMetrics().lineSpacing() + kCaptionMargin);
    header->setMaximumSectionSize(kWidestColumn);  // a long name pushes no column out
    header->setSectionsClickable(true);
    header->setSectionsMovable(true);
    header->setFirstSectionMovable(false);  // the log lines begin in it
    header->resizeSection(StatusTreeModel::Status, kStatusWidth);
    fit_->setSingleShot(true);
    fit_->setInterval(kFitAfterMs);
    fitColumns();
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setEnabled(false);
    (new QVBoxLayout(tree_->viewport()))->addWidget(empty_);
}

QWidget* StatusView::createOptions() {
    auto* options = new QGroupBox(TfraOppgjorStatus::ViewOptionsCaption(), this);
    auto* errorsOnly = new QCheckBox(TfraOppgjorStatus::ErrorsOnlyCaption(), options);
    errorsOnly->setObjectName(QStringLiteral("errorsOnly"));
    auto* failedFirst = new QCheckBox(QStringLiteral("Feilede kasser først"), options);
    failedFirst->setObjectName(QStringLiteral("failedFirst"));
    auto* group = new QComboBox(options);
    group->setObjectName(QStringLiteral("group"));
    for (const char* caption : kGroupCaptions) group->addItem(QString::fromUtf8(caption));
    auto* groupLabel = new QLabel(QStringLiteral("Grupper etter:"), options);
    groupLabel->setBuddy(group);
    auto* layout = new QHBoxLayout(options);
    layout->addWidget(errorsOnly);
    layout->addWidget(failedFirst);
    layout->addStretch();
    layout->addWidget(groupLabel);
    layout->addWidget(group);

    setTabOrder(group, tree_);
    setTabOrder(tree_, melding_);

    connect(errorsOnly, &QCheckBox::toggled, this, [this](bool on) { status_.SetErrorsOnly(on); });
    connect(failedFirst, &QCheckBox::toggled, this,
            [this](bool on) { arrangeBy([on](StatusArrangement& to) { to.failedFirst = on; }); });
    connect(group, &QComboBox::currentIndexChanged, this, [this](int index) {
        const QScopedValueRollback<bool> fitting(fitting_, true);
        tree_->header()->setMaximumSectionSize(index > 0 ? kGroupWidth : kWidestColumn);
        tree_->header()->resizeSection(StatusTreeModel::Status, index > 0 ? kGroupWidth : kStatusWidth);
        arrangeBy([index](StatusArrangement& to) { to.group = static_cast<StatusGroup>(index); });
    });
    connect(states_, &StateBar::filterChanged, this,
            [this](std::optional<TillState> only) { arrangeBy([only](StatusArrangement& to) { to.only = only; }); });
    return options;
}

void StatusView::connectStatus() {
    connect(&status_, &TfraOppgjorStatus::RowExpanded, this, [this](int row) {
        if (const QModelIndex till = model_->indexOf(row); till.isValid()) tree_->expand(till);
    });
    connect(&status_, &TfraOppgjorStatus::AllExpanded, this, [this] { expandTills({}); });
    connect(&status_, &TfraOppgjorStatus::AllCollapsed, tree_, &QTreeView::collapseAll);
    connect(&status_, &TfraOppgjorStatus::RefreshWanted, this, [this] {
        follow(status_.CurrentRow());
        repaint();
    });
    connect(&status_, &TfraOppgjorStatus::CurrentRowChanged, this, &StatusView::followSoon);
    connect(&status_, &TfraOppgjorStatus::RunningRowChanged, this, &StatusView::showCounts);
    connect(&status_.memOppgjorStatus, &QAbstractItemModel::modelReset, this, [this] {
        following_ = true;
        showCounts();
    });
    connect(&status_.memOppgjorStatus, &QAbstractItemModel::rowsInserted, this, &StatusView::showCounts);
    connect(&status_.memOppgjorStatus, &QAbstractItemModel::dataChanged, this, &StatusView::showCounts);
}

void StatusView::connectTree() {
    connect(model_, &QAbstractItemModel::modelReset, this, [this] {
        rowsCame({}, 0);
        expandTills({});
        follow(status_.CurrentRow());
        showMelding();
    });
    connect(model_, &QAbstractItemModel::rowsInserted, this, &StatusView::rowsCame);
    connect(model_, &QAbstractItemModel::dataChanged, this, [this] {
        showMelding();
        fitSoon();
    });
    connect(fit_, &QTimer::timeout, this, &StatusView::fitColumns);
    connect(tree_->header(), &QHeaderView::sectionClicked, this, &StatusView::sortBy);
    // The last one goes with the window's width.
    connect(tree_->header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (!fitting_ && tree_->header()->visualIndex(column) < tree_->header()->count() - 1) columnsSet_ = true;
    });
    connect(tree_->header(), &QHeaderView::sectionMoved, this, [this] { columnsSet_ = columnsSet_ || !fitting_; });
    connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
        if (!moving_ && current.isValid()) {
            following_ = false;
            status_.SetCurrentRow(model_->statusRow(current));
        }
        showMelding();
    });
    connect(tree_, &QWidget::customContextMenuRequested, this, &StatusView::showMenu);
    connect(tree_, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (!showStory(index)) toggle(index);
    });
    story_ = new QAction(QStringLiteral("Vis hva som skjedde..."), tree_);
    story_->setObjectName(QStringLiteral("story"));
    story_->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    story_->setShortcutContext(Qt::WidgetShortcut);
    connect(story_, &QAction::triggered, this, [this] {
        if (!showStory(tree_->currentIndex())) toggle(tree_->currentIndex());
    });
    tree_->addAction(story_);
    auto* copy = new QAction(QStringLiteral("Kopier"), tree_);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &StatusView::copyToClipboard);
    tree_->addAction(copy);
}

void StatusView::showMenu(const QPoint& at) {
    QMenu menu;
    menu.addAction(TfraOppgjorStatus::ExpandAllCaption(), this, [this] { status_.ExpandAll(); });
    menu.addAction(TfraOppgjorStatus::CollapseAllCaption(), this, [this] { status_.CollapseAll(); });
    menu.addSeparator();
    const QModelIndex current = tree_->currentIndex();
    const int row = current.isValid() ? model_->statusRow(current) : -1;
    for (QAction* action : tree_->actions())
        if (action != story_ || (row >= 0 && hasStory(status_, row))) menu.addAction(action);
    menu.addAction(QStringLiteral("Eksporter til regneark..."), this, &StatusView::exportToSpreadsheet);
    menu.addSeparator();
    menu.addAction(QStringLiteral("Standard kolonner"), this, &StatusView::standardColumns)->setEnabled(columnsSet_);
    menu.exec(tree_->viewport()->mapToGlobal(at));
}

bool StatusView::showStory(const QModelIndex& index) {
    const int row = index.isValid() ? model_->statusRow(index) : -1;
    if (row < 0 || !hasStory(status_, row)) return false;
    (new TillStoryDialog(storyOf(status_, row), this))->show();
    return true;
}

// A line belongs to its till.
void StatusView::toggle(const QModelIndex& index) {
    const QModelIndex first = index.siblingAtColumn(0);
    if (first.isValid() && model_->rowCount(first) > 0) tree_->setExpanded(first, !tree_->isExpanded(first));
}

void StatusView::copyToClipboard() const {
    QGuiApplication::clipboard()->setText(statusAsText(*model_));
}

void StatusView::exportToSpreadsheet() {
    const QString file = AskExportFile();
    if (!file.isEmpty()) writeStatusSpreadsheet(*model_, status_, file);
}

void StatusView::arrangeBy(const std::function<void(StatusArrangement&)>& change) {
    StatusArrangement to = model_->arrangement();
    change(to);
    model_->setArrangement(to);
}

// Upwards, downwards, and back to the run's order.
void StatusView::sortBy(int column) {
    const OppgjorStatusTable::Column source = StatusTreeModel::sourceColumn(column);
    arrangeBy([source](StatusArrangement& to) {
        if (to.sortColumn != source) {
            to.sortColumn = source;
            to.sortOrder = Qt::AscendingOrder;
        } else if (to.sortOrder == Qt::AscendingOrder) {
            to.sortOrder = Qt::DescendingOrder;
        } else {
            to.sortColumn.reset();
        }
    });
    tree_->header()->setSortIndicatorShown(model_->arrangement().sortColumn.has_value());
    tree_->header()->setSortIndicator(column, model_->arrangement().sortOrder);
}

// A run sets all its tills at its beginning, and the tree lays out all rows each time that it moves: once for all of
// them.
void StatusView::followSoon() {
    if (std::exchange(followsSoon_, true)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            followsSoon_ = false;
            follow(status_.CurrentRow());
        },
        Qt::QueuedConnection);
}

// The highlight goes to the till that was set last, unless the operator has chosen another.
void StatusView::follow(int statusRow) {
    if (!following_ && tree_->currentIndex().isValid()) return;
    const QScopedValueRollback<bool> moving(moving_, true);
    const QModelIndex till = model_->indexOf(statusRow);
    tree_->setCurrentIndex(till);
    if (till.isValid()) tree_->scrollTo(till);
}

// A log line is shown over all columns.
void StatusView::spanLines(const QModelIndex& till, int first) {
    for (int line = first; line < model_->rowCount(till); ++line) tree_->setFirstColumnSpanned(line, till, true);
}

// The rows from the first under `above`, with all that is under them.
void StatusView::rowsCame(const QModelIndex& above, int first) {
    if (above.isValid() && model_->kindOf(above) == StatusTreeModel::Kind::Till) {
        spanLines(above, first);
        return;
    }
    for (int row = first; row < model_->rowCount(above); ++row) rowsCame(model_->index(row, 0, above), 0);
    fitSoon();
}

// Only those that are not: the tree lists all rows anew for each.
void StatusView::expandTills(const QModelIndex& above) {
    for (int row = 0; row < model_->rowCount(above); ++row) {
        const QModelIndex each = model_->index(row, 0, above);
        if (model_->rowCount(each) > 0 && !tree_->isExpanded(each)) tree_->expand(each);
        if (model_->kindOf(each) == StatusTreeModel::Kind::Group) expandTills(each);
    }
}

void StatusView::fitSoon() {
    if (!fit_->isActive()) fit_->start();
}

// Now and then, and by the rows in sight: a header that follows each change by itself measures every row each time. The
// first column holds the log lines too, and must not grow with them. Small numbers under long captions get no more than
// the caption takes on two lines.
void StatusView::fitColumns() {
    if (columnsSet_) return;
    const QScopedValueRollback<bool> fitting(fitting_, true);
    for (int column = StatusTreeModel::Status + 1; column < StatusTreeModel::ColumnCount; ++column) {
        if (column == StatusTreeModel::IkkeOppgjort || column == StatusTreeModel::Backup) {
            const QString caption = model_->headerData(column, Qt::Horizontal).toString();
            tree_->header()->resizeSection(column, twoLineWidth(tree_->header()->fontMetrics(), caption));
        } else {
            tree_->resizeColumnToContents(column);
        }
    }
}

// "column:width" from left to right.
QByteArray StatusView::columns() const {
    if (!columnsSet_) return {};
    QByteArrayList all;
    const QHeaderView& header = *tree_->header();
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        all << QByteArray::number(column) + ':' + QByteArray::number(header.sectionSize(column));
    }
    return all.join(' ');
}

void StatusView::restoreColumns(const QByteArray& columns) {
    QHeaderView& header = *tree_->header();
    QList<std::pair<int, int>> all;
    QSet<int> different;
    for (const QByteArray& each : columns.split(' ')) {
        const QList<QByteArray> parts = each.split(':');
        const std::pair<int, int> column{parts[0].toInt(), parts.value(1).toInt()};
        if (column.first >= header.count() || column.second < header.minimumSectionSize()) return;
        all << column;
        different << column.first;
    }
    if (different.size() != header.count() || all.size() != header.count()) return;
    const QScopedValueRollback<bool> fitting(fitting_, true);
    for (int place = 0; place < all.size(); ++place) {
        header.moveSection(header.visualIndex(all[place].first), place);
        header.resizeSection(all[place].first, all[place].second);
    }
    columnsSet_ = true;
}

void StatusView::standardColumns() {
    QHeaderView& header = *tree_->header();
    columnsSet_ = false;
    const QScopedValueRollback<bool> fitting(fitting_, true);
    for (int column = 0; column < header.count(); ++column) header.moveSection(header.visualIndex(column), column);
    fitColumns();
}

void StatusView::showCounts() {
    const OppgjorStatusSums sums = status_.memOppgjorStatus.Sums();
    empty_->setVisible(sums.Count == 0);
    sums_->setText(QStringLiteral("Antall: %1     Ant. ikke oppgjorte salg: %2     Tid brukt: %3")
                       .arg(sums.Count)
                       .arg(sums.AntSalgIkkeOppgjort)
                       .arg(sums.TidBruktText()));
    states_->setCounts(CountTillStates(status_));
}

// Of the row that is highlighted, whatever the run does.
void StatusView::showMelding() {
    const QModelIndex current = tree_->currentIndex();
    const int row = current.isValid() ? model_->statusRow(current) : -1;
    const QString text = row >= 0 && row < status_.memOppgjorStatus.RecordCount()
                             ? status_.memOppgjorStatus.Row(row).Melding
                             : QString();
    if (melding_->toPlainText() != text) melding_->setPlainText(text);
}

}  // namespace torvik
