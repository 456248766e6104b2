// The dialog in which a script for the tills is written or loaded. It tells which tills the script will run at, and
// warns of one that changes data. Its size and state are kept for the user.
#pragma once

#include <QDialog>
#include <QStringList>
#include <optional>

class QCheckBox;
class QFileSystemModel;
class QLabel;
class QPlainTextEdit;
class QSplitter;
class QTreeView;

namespace torvik {

class SettingsStore;

struct SqlScriptAnswer {
    QStringList lines;
    bool returnsData = true;
};

class TfrmSQLScript : public QDialog {
    Q_OBJECT

public:
    // folder: the program's, where the file tree is rooted. tills: the chosen ones, as the operator knows them. The
    // store outlives the dialog.
    TfrmSQLScript(SettingsStore& store, const QString& folder, const QStringList& tills, QWidget* parent = nullptr);
    ~TfrmSQLScript() override;

    // Nothing when the answer was not OK.
    [[nodiscard]] std::optional<SqlScriptAnswer> Execute();
    // The memo's lines; the end of the last makes no further one.
    [[nodiscard]] QStringList lines() const;
    // Loads a script into the memo, or says why not.
    void openFile(const QString& file);

private:
    [[nodiscard]] QWidget* fileSide();
    [[nodiscard]] QWidget* scriptSide(const QStringList& tills);
    void readState();
    void writeState();
    void rootTree(bool atDesktop);
    void showWhatItDoes();

    SettingsStore& store_;
    QString folder_;
    qsizetype tillCount_;
    QFileSystemModel* files_;
    QTreeView* tree_;
    QCheckBox* fromDesktop_;
    QSplitter* sides_;
    QPlainTextEdit* script_;
    QCheckBox* returnsData_;
    QLabel* effect_;
    QString recentPath_;
};

}  // namespace torvik
