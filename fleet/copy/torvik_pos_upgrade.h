// Copies one file to a till's share: connects, copies, disconnects. Lives for one operation over the tills, with what
// the tills have in common; sending a file and the upgrade of tills that take none from their database use it.
#pragma once

#include <QString>
#include <memory>
#include <string>

#include "fleet/copy/copy_window.h"

namespace torvik {

class RunParts;
struct ShareLogin;

class TTorvikPOSUpgrade {
public:
    TTorvikPOSUpgrade(RunParts& parts, const CopyTools& tools);
    ~TTorvikPOSUpgrade();

    QString NewVersionZipFile;  // the local file
    QString TargetDirectory;    // in the share

    // Both log their steps, and every failure with its text; a failure then leaves as the silent abort, with the share
    // still connected if the copy failed. Resource: "\\server\share", where server is the till's Ikk_Server. The
    // options' user and password stand in for the till's while OverrideSourceUserNameAndPassword is set.
    void Upgrade(const QString& Resource, const QString& UserName, const QString& Password);
    // Also deletes the copy again, to measure the line.
    void SendFile(const QString& Resource, const QString& UserName, bool DeleteAfterCopy, const QString& Password);

    // Of the file on the share that was last connected to.
    [[nodiscard]] QString FullTargetName() const;

private:
    void deliver(const QString& notConnected, bool deleteAfterCopy, const ShareLogin& login);
    [[nodiscard]] bool connect(const ShareLogin& login);
    void copy();
    void disconnect();
    [[nodiscard]] ShareLogin loginOf(const QString& userName, const QString& password) const;
    [[nodiscard]] std::string reached() const;
    [[nodiscard]] std::string targetOn(const std::string& resource) const;

    RunParts& parts_;
    CopyTools tools_;
    std::unique_ptr<FileShare> share_;
    QString resource_;
};

}  // namespace torvik
