// The program's start and end, in the order that docs/start-up.md tells. It takes no arguments.
#include <QApplication>
#include <QDate>
#include <QFileInfo>
#include <QTimer>

#include "engine/base/abort.h"
#include "logging/program_file.h"
#include "logging/setup_logging.h"
#include "shell/look/program_style.h"
#include "shell/main_window.h"
#include "shell/settings/settings_store.h"
#include "shell/start/application_folder.h"
#include "shell/start/start_message.h"
#include "shell/start/termination.h"
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

void setUpLogging(const QString& folder) {
    const QDate today = QDate::currentDate();
    SetupLogging(QStringLiteral("TorvikPosSync"), folder + QStringLiteral("TorvikPosSync.ini"),
                 folder + QStringLiteral("Log/%1/%2/TorvikPosSync.log").arg(today.year()).arg(today.month()),
                 QString());
    GlobalLogger().WithProperty(QStringLiteral("TorvikPosSyncName"),
                                JsonValue(QFileInfo(programFile()).fileName().toStdString()));
}

void runWindow(Application& application, const ShowMessage& showMessage) {
    // A signal that comes while the window is made closes the message that may stand there, and is served once the
    // window is made.
    bool terminated = false;
    onTerminationSignal([&application, &terminated] {
        terminated = true;
        if (application.window) {
            application.window->terminate();
        } else {
            QApplication::closeAllWindows();
        }
    });
    SettingsStore store;
    const bool shown = !store.read("SystemTray").toBool();
    MainWindow window(applicationFolder(), store, showMessage);
    application.window = &window;
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window, [&window] {
        beginTermination();
        window.terminate();
    });
    if (terminated) QTimer::singleShot(0, &window, &MainWindow::terminate);
    if (shown) window.show();
    QApplication::exec();
    application.window = nullptr;
}

int run(int argc, char** argv) {
    QApplication::setApplicationName(QStringLiteral("TorvikPosSync"));
    QApplication::setApplicationVersion(QStringLiteral(TORVIK_VERSION));
    setUpLogging(applicationFolder());
    int exitCode = 0;
    Application application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new ProgramStyle);

    bool told = false;
    const auto tell = [&told](const QString& message) {
        told = true;
        showStartMessage(message);
    };
    try {
        runWindow(application, tell);
        GlobalLogger().LogInformation(QStringLiteral("Done."));
    } catch (const std::exception& e) {
        exitCode = 1;
        application.window = nullptr;
        GlobalLogger().LogError(e, QStringLiteral("Error in TorvikPosSync"));
        if (!told) tell(ErrorText(e));
    }
    GlobalLogger().ClearSinks();  // what is still queued is written before the process ends
    beginTermination();           // a login that nobody waits for any more does not keep a closed program
    return exitCode;
}

}  // namespace
}  // namespace torvik

int main(int argc, char** argv) {
    return torvik::run(argc, argv);
}
