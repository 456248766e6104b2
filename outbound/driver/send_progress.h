// What a send tells of its progress: the running step, rows copied, percent of a bulk load. Owned by TdmTorvikToPOS,
// whose OnProgress and CheckForCancel it reads.
#pragma once

#include <QString>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class SendProgress {
public:
    // All three must outlive it.
    SendProgress(QObject& sender, const TProgressEvent& onProgress, const bool& checkForCancel);

    [[nodiscard]] const QString& CurrentTransformation() const { return currentTransformation_; }
    // Stores the name of the running step and reports that it begins.
    void SetCurrentTransformation(const QString& name);
    // "text: value av total", at every 1000th value and when forced. Nothing for a total of 0; raises EngineError while
    // CheckForCancel is set.
    void DoProgress(const QString& text, int value, bool force, int total);
    // A bulk load begins: its percent is told anew.
    void loadBegins() { lastLdrGeneralProgressUpdate_ = 0; }
    // Percent done of a bulk load, told at every tenth. Raises EngineError while CheckForCancel is set.
    void ldrGeneralProgress(int percent);

private:
    [[nodiscard]] bool ShouldReport(const QString& name, int value, int step);

    QObject& sender_;
    const TProgressEvent& onProgress_;
    const bool& checkForCancel_;
    QString currentTransformation_;
    QString previousTransformation_;
    int previousTransformationProgressValue_ = 0;
    int lastLdrGeneralProgressUpdate_ = 0;
};

}  // namespace torvik
