// Asks which file goes to which folder of the tills' shares, and by whose login. Sending a file and the speed test use
// it.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace torvik {

struct FileCopyAnswer {
    QString share;
    QString folder;
    QString localFile;
    bool overridesLogin = false;
    QString userName;
    QString password;
};

class TfrmKopierFil : public QDialog {
    Q_OBJECT

public:
    // chooseFile: the file dialog of the button; nothing when it was cancelled.
    TfrmKopierFil(std::function<std::optional<QString>()> chooseFile, QWidget* parent = nullptr);

    // Nothing when the answer was not OK.
    [[nodiscard]] std::optional<FileCopyAnswer> Execute();

private:
    [[nodiscard]] QLineEdit* field(const char* name, const QString& preset);
    void chooseLocalFile();
    void setOverride(bool on);
    void showTarget();

    std::function<std::optional<QString>()> chooseFile_;
    QLineEdit* teResource_;
    QLineEdit* teFolder_;
    QLineEdit* teLocalFile_;
    QCheckBox* cbOverrideUsername_;
    QLineEdit* teUserName_;
    QLineEdit* tePassword_;
    QLabel* lblInfo_;
};

}  // namespace torvik
