// The program's start and end. It takes no arguments.
#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>

#include "engine/abort.h"
#include "logging/logger.h"
#include "shell/application_folder.h"
#include "shell/main_window.h"
#include "shell/settings.h"
#include "shell/termination.h"
#include "torvik_version.h"

namespace torvik {
namespace {

// Exceptions that reach the message loop end here: the window writes them to its panes.
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const EAbort&) {
            return false;
        } catch (const std::exception& e) {
            if (!window) throw;
            window->AppException(e);
            return false;
        }
    }

    MainWindow* window = nullptr;
};

int run(int argc, char** argv) {
    Application application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("TorvikPosSync"));
    QApplication::setApplicationVersion(QStringLiteral(TORVIK_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(QStringLiteral("Fusion"));
    GlobalLogger().WithProperty(QStringLiteral("TorvikPosSyncName"),
                                JsonValue(QFileInfo(QApplication::applicationFilePath()).fileName().toStdString()));
    int exitCode = 0;
    try {
        SettingsStore store;
        MainWindow window(applicationFolder(), store);
        application.window = &window;
        onTerminationSignal([&window] { window.close(); });
        if (!store.read("SystemTray").toBool()) window.show();
        QApplication::exec();
        application.window = nullptr;
        GlobalLogger().LogInformation(QStringLiteral("Done."));
    } catch (const std::exception& e) {
        exitCode = 1;
        application.window = nullptr;
        GlobalLogger().LogError(e, QStringLiteral("Error in TorvikPosSync"));
        QMessageBox::critical(nullptr, QStringLiteral("TorvikPosSync"), ErrorText(e));
    }
    return exitCode;
}

}  // namespace
}  // namespace torvik

int main(int argc, char** argv) {
    return torvik::run(argc, argv);
}
