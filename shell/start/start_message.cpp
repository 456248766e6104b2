// Standard error first: a program that nobody watches has told its reason even when no box can be shown.
#include "shell/start/start_message.h"

#include <QGuiApplication>
#include <QMessageBox>
#include <QTimer>
#include <chrono>
#include <iostream>

#include "shell/look/icons.h"

namespace torvik {

namespace {

constexpr std::chrono::seconds kBoxStands{10};

bool hasScreen() {
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

}  // namespace

void showStartMessage(const QString& message) {
    std::cerr << message.toStdString() << std::endl;
    if (!hasScreen()) return;
    QMessageBox box(QMessageBox::Critical, QStringLiteral("TorvikPosSync"), message, QMessageBox::Ok);
    box.setWindowIcon(applicationIcon());
    QTimer::singleShot(kBoxStands, &box, &QMessageBox::accept);
    box.exec();
}

}  // namespace torvik
