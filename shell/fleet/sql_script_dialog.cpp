#include "shell/fleet/sql_script_dialog.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QFontDatabase>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QSplitter>
#include <QStandardPaths>
#include <QTreeView>
#include <QVBoxLayout>

#include "fleet/ini/ini_text.h"
#include "fleet/scripts/script_batches.h"
#include "shell/dialogs/ok_avbryt.h"
#include "shell/settings/settings_store.h"

namespace torvik {

namespace {

constexpr SettingRow kFileBrowserWidth{
    .name = "TfrmSQLScript/FileBrowserWidth", .type = SettingType::Integer, .defaultText = "260"};
constexpr SettingRow kWidth{.name = "TfrmSQLScript/Width", .type = SettingType::Integer, .defaultText = "1000"};
constexpr SettingRow kHeight{.name = "TfrmSQLScript/Height", .type = SettingType::Integer, .defaultText = "640"};
constexpr SettingRow kBrowseFromDesktop{
    .name = "TfrmSQLScript/BrowseFromDesktop", .type = SettingType::Boolean, .defaultText = "false"};
constexpr SettingRow kRecentPath{.name = "TfrmSQLScript/RecentPath", .type = SettingType::Text, .defaultText = ""};

constexpr int kTillLines = 3;
constexpr int kFrame = 12;

QWidget* column(std::initializer_list<QWidget*> widgets, QWidget* wide) {
    auto* side = new QWidget;
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* each : widgets) layout->addWidget(each, each == wide ? 1 : 0);
    return side;
}

}  // namespace

TfrmSQLScript::TfrmSQLScript(SettingsStore& store, const QString& folder, const QStringList& tills, QWidget* parent)
    : QDialog(parent),
      store_(store),
      folder_(folder),
      tillCount_(tills.size()),
      files_(new QFileSystemModel(this)),
      tree_(new QTreeView(this)),
      fromDesktop_(new QCheckBox(QStringLiteral("Vis alle nivåer, fra skriverbordet"), this)),
      sides_(new QSplitter(Qt::Horizontal, this)),
      script_(new QPlainTextEdit(this)),
      returnsData_(new QCheckBox(QStringLiteral("Returnèr data"), this)),
      effect_(new QLabel(this)) {
    setObjectName(QStringLiteral("TfrmSQLScript"));
    setWindowTitle(QStringLiteral("SQL Script"));
    sides_->addWidget(fileSide());
    sides_->addWidget(scriptSide(tills));
    sides_->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(sides_, 1);
    layout->addWidget(okAndAvbryt(*this));
    auto* toggle = new QShortcut(QKeySequence(Qt::Key_F8), this);
    connect(toggle, &QShortcut::activated, this,
            [this] { sides_->widget(0)->setVisible(!sides_->widget(0)->isVisible()); });
    connect(script_, &QPlainTextEdit::textChanged, this, &TfrmSQLScript::showWhatItDoes);
    script_->setPlainText(QStringLiteral("-- Skriv SQL setningen her, og klikk deretter OK"));
    readState();
    script_->setFocus();
}

TfrmSQLScript::~TfrmSQLScript() {
    writeState();
}

QWidget* TfrmSQLScript::fileSide() {
    auto* label = new QLabel(QStringLiteral("Dobbelklikk på skriptet for å vise til høyre"), this);
    label->setWordWrap(true);
    tree_->setObjectName(QStringLiteral("files"));
    tree_->setModel(files_);
    tree_->setHeaderHidden(true);
    for (int each = 1; each < files_->columnCount(); ++each) tree_->hideColumn(each);
    tree_->setExpandsOnDoubleClick(true);
    fromDesktop_->setObjectName(QStringLiteral("fromDesktop"));
    connect(fromDesktop_, &QCheckBox::toggled, this, &TfrmSQLScript::rootTree);
    connect(tree_, &QTreeView::doubleClicked, this, [this](const QModelIndex& at) {
        if (!files_->isDir(at)) openFile(files_->filePath(at));
    });
    return column({label, tree_, fromDesktop_}, tree_);
}

QWidget* TfrmSQLScript::scriptSide(const QStringList& tills) {
    auto* label = new QLabel(QStringLiteral("&SQL script som skal kjøres mot kassene:"), this);
    label->setBuddy(script_);
    script_->setObjectName(QStringLiteral("script"));
    script_->setLineWrapMode(QPlainTextEdit::NoWrap);
    script_->setTabChangesFocus(false);
    script_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    returnsData_->setObjectName(QStringLiteral("returnsData"));
    returnsData_->setChecked(true);
    effect_->setObjectName(QStringLiteral("effect"));
    auto* list = new QPlainTextEdit(tills.join(QStringLiteral(", ")), this);
    list->setObjectName(QStringLiteral("tills"));
    list->setReadOnly(true);
    list->setFixedHeight(kTillLines * list->fontMetrics().lineSpacing() + kFrame);
    return column({label, script_, returnsData_, effect_, list}, script_);
}

void TfrmSQLScript::readState() {
    resize(store_.read(kWidth).toInt(), store_.read(kHeight).toInt());
    const int files = store_.read(kFileBrowserWidth).toInt();
    sides_->setSizes({files, qMax(1, width() - files)});
    recentPath_ = store_.read(kRecentPath).toString();
    fromDesktop_->setChecked(store_.read(kBrowseFromDesktop).toBool());
    rootTree(fromDesktop_->isChecked());
}

void TfrmSQLScript::writeState() {
    if (sides_->widget(0)->isVisible()) store_.write(kFileBrowserWidth.name, sides_->sizes().first());
    store_.write(kWidth.name, width());
    store_.write(kHeight.name, height());
    store_.write(kBrowseFromDesktop.name, fromDesktop_->isChecked());
    const QString current = files_->filePath(tree_->currentIndex());
    store_.write(kRecentPath.name, current.isEmpty() ? recentPath_ : current);
}

// All levels: the machine's drives or its one root, opened at the desktop.
void TfrmSQLScript::rootTree(bool atDesktop) {
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    const QString root = atDesktop ? QString() : QDir::cleanPath(folder_);
    files_->setRootPath(root);
    tree_->setRootIndex(atDesktop ? QModelIndex() : files_->index(root));
    const QString start = QFileInfo::exists(recentPath_) ? recentPath_ : atDesktop ? desktop : QString();
    if (start.isEmpty()) return;
    tree_->setCurrentIndex(files_->index(start));
    tree_->scrollTo(tree_->currentIndex());
}

void TfrmSQLScript::openFile(const QString& file) {
    const QString extension = QFileInfo(file).suffix().toUpper();
    if (extension != QLatin1String("SQL") && extension != QLatin1String("TXT")) {
        QMessageBox::information(this, windowTitle(),
                                 QStringLiteral("Kun filer med endelsen .txt og .sql kan åpnes her"));
        return;
    }
    QFile script(file);
    if (!script.open(QIODevice::ReadOnly)) {
        QMessageBox::warning(this, windowTitle(),
                             QStringLiteral("Klarte ikke å lese %1: %2").arg(file, script.errorString()));
        return;
    }
    recentPath_ = file;
    script_->setPlainText(iniLines(script.readAll()).join(u'\n'));
}

QStringList TfrmSQLScript::lines() const {
    QString text = script_->toPlainText();
    if (text.endsWith(u'\n')) text.chop(1);
    return text.isEmpty() ? QStringList() : text.split(u'\n');
}

void TfrmSQLScript::showWhatItDoes() {
    const bool changes = changesData(lines());
    const QString tills = tillCount_ == 1 ? QStringLiteral("1 kasse:") : QStringLiteral("%1 kasser:").arg(tillCount_);
    effect_->setText(changes ? QStringLiteral("<b>Skriptet kan endre data på %1</b>").arg(tills)
                             : QStringLiteral("Skriptet kjøres mot %1").arg(tills));
}

std::optional<SqlScriptAnswer> TfrmSQLScript::Execute() {
    if (exec() != QDialog::Accepted) return std::nullopt;
    return SqlScriptAnswer{lines(), returnsData_->isChecked()};
}

}  // namespace torvik
