// All on the main thread: a worker tells its end through the message loop.
#include "shell/main_threads.h"

#include <QMessageBox>

#include "engine/torvik_pos.h"
#include "engine/workers/torvik_pos_thread.h"

namespace torvik {

MainThreads::MainThreads(TTorvikPos& torvikPos, QWidget& window)
    : ShowMessage([&window](const QString& text) { QMessageBox::information(&window, window.windowTitle(), text); }),
      torvikPos_(torvikPos),
      window_(window) {
    torvikPos_.ThreadList = &MainThreadList;
    torvikPos_.OnThreadDone = [this](QObject* Sender) { SyncThreadDone(Sender); };
}

MainThreads::~MainThreads() {
    torvikPos_.OnThreadDone = nullptr;
    torvikPos_.ThreadList = nullptr;
}

void MainThreads::SyncThreadDone(QObject* Sender) {
    auto* worker = qobject_cast<TTorvikPosThread*>(Sender);
    if (!worker) return;
    for (const QString& error : worker->ErrorList) ShowMessage(error);
    TThreadItem* item = MainThreadList.FindItemID(worker->ID());
    if (!item) return;
    if (item->CallBackProc) item->CallBackProc(&window_);
    // The buffer is kept: a later worker's end shows its lines again.
    if (torvikPos_.Log) {
        for (const QString& line : torvikPos_.Logbuffer) torvikPos_.Log->AddLine(line);
    }
    MainThreadList.Free(*item);
}

void MainThreads::ClearThreads() {
    while (MainThreadList.Count() > 0) {
        const int id = MainThreadList[0].ID;
        if (TTorvikPosThread* worker = MainThreadList[0].AThread) {
            worker->Terminate();
            worker->Resume();
            worker->WaitFor();
        }
        // A worker's end takes its item along, but for one that has no worker.
        if (TThreadItem* left = MainThreadList.FindItemID(id)) MainThreadList.Free(*left);
    }
}

QString MainThreads::ClosingWarning() const {
    if (MainThreadList.Count() == 0) return {};
    return QStringLiteral("Du kan ikke avslutte programmet, fordi det er fortsatt %1 prosesser (trÃ¥der) aktive")
        .arg(MainThreadList.Count());
}

}  // namespace torvik
