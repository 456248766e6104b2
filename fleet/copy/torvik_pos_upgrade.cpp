// The order of the steps is the system's own: after a copy that failed the share is not disconnected.
#include "fleet/copy/torvik_pos_upgrade.h"

#include <QDir>
#include <QFileInfo>
#include <cmath>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/run/run_parts.h"
#include "fleet/share/file_share.h"
#include "fleet/share/share_names.h"

namespace torvik {

namespace {

QString progressText(std::uint64_t transferred, std::uint64_t total, int percent) {
    return QStringLiteral("Kopiert %1 bytes av totalt %2 bytes (%3%4)")
        .arg(QString::number(static_cast<double>(transferred), 'f', 2),
             QString::number(static_cast<double>(total), 'f', 2), QString::number(percent), QStringLiteral("%"));
}

int percentOf(std::uint64_t transferred, std::uint64_t total) {
    if (total == 0) return 0;
    return static_cast<int>(std::lround(static_cast<double>(transferred) / static_cast<double>(total) * 100));
}

}  // namespace

TTorvikPOSUpgrade::TTorvikPOSUpgrade(RunParts& parts, const CopyTools& tools)
    : parts_(parts), tools_(tools), share_(tools.Share ? tools.Share() : systemFileShare()) {}

TTorvikPOSUpgrade::~TTorvikPOSUpgrade() = default;

void TTorvikPOSUpgrade::Upgrade(const QString& Resource, const QString& UserName, const QString& Password) {
    resource_ = Resource;
    deliver(QStringLiteral("Klarte ikke å oppgradere, fordi kobling til %1 ikke kunne lages"), false,
            loginOf(UserName, Password));
}

void TTorvikPOSUpgrade::SendFile(const QString& Resource, const QString& UserName, bool DeleteAfterCopy,
                                 const QString& Password) {
    resource_ = Resource;
    deliver(QStringLiteral("Klarte ikke å kopiere filen, fordi kobling til %1 ikke kunne lages"), DeleteAfterCopy,
            loginOf(UserName, Password));
}

void TTorvikPOSUpgrade::deliver(const QString& notConnected, bool deleteAfterCopy, const ShareLogin& login) {
    try {
        if (!connect(login)) throw EngineError(notConnected.arg(resource_));
        parts_.Log.AddLog(QStringLiteral("Starter kopiering fra %1 til %2").arg(NewVersionZipFile, FullTargetName()));
        copy();
        parts_.Log.AddLog(QStringLiteral("Fullført kopiering"));
        if (deleteAfterCopy) share_->remove(targetOn(reached()));
        disconnect();
    } catch (const std::exception& e) {
        parts_.Log.AddLog(ErrorText(e), true);
        throw EAbort();
    }
}

bool TTorvikPOSUpgrade::connect(const ShareLogin& login) {
    try {
        share_->connect(reached(), login);
        return true;
    } catch (const ShareError& e) {
        parts_.Log.AddLog(ErrorText(e), true);
        return false;
    }
}

void TTorvikPOSUpgrade::copy() {
    const std::unique_ptr<CopyWindow> window = tools_.Window ? tools_.Window() : nullptr;
    const auto& pump = parts_.Context.Seam.pumpMessages;
    if (window) {
        window->show();
        pump();
    }
    const auto progress = [&](std::uint64_t transferred, std::uint64_t total) {
        const int percent = percentOf(transferred, total);
        if (window && percent != window->position())
            window->setProgress(percent, progressText(transferred, total, percent));
        pump();
        if (parts_.Control.Abandoned()) parts_.Control.TestCancel();
    };
    const int neverCancelled = 0;
    share_->copy(QDir::toNativeSeparators(NewVersionZipFile).toStdString(), targetOn(reached()), progress,
                 window ? window->Cancel : neverCancelled);
}

void TTorvikPOSUpgrade::disconnect() {
    try {
        share_->disconnect(reached());
    } catch (const ShareError&) {
        // The word is the same when no upgrade but a file was sent: required.
        parts_.Log.AddLog(
            QStringLiteral("Klarte ikke å koble fra %1. Oppgradering ble likevel fullført.").arg(resource_));
    }
}

// What the operator is told may name the port or the instance of the till's database server.
std::string TTorvikPOSUpgrade::reached() const {
    return reachedResource(resource_.toStdString());
}

ShareLogin TTorvikPOSUpgrade::loginOf(const QString& userName, const QString& password) const {
    const RunOptions& options = parts_.Context.Options;
    if (options.OverrideSourceUserNameAndPassword)
        return {options.OverrideSourceUserName.toStdString(), options.OverrideSourcePassword.toStdString()};
    return {userName.toStdString(), password.toStdString()};
}

QString TTorvikPOSUpgrade::FullTargetName() const {
    return QString::fromStdString(targetOn(resource_.toStdString()));
}

std::string TTorvikPOSUpgrade::targetOn(const std::string& resource) const {
    return targetName(resource, TargetDirectory.toStdString(), QFileInfo(NewVersionZipFile).fileName().toStdString());
}

}  // namespace torvik
