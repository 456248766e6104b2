#include "outbound/driver/send_progress.h"

#include "engine/base/abort.h"

namespace torvik {

namespace {

constexpr int kEveryRows = 1000;
constexpr int kEveryPercent = 10;

}  // namespace

SendProgress::SendProgress(QObject& sender, const TProgressEvent& onProgress, const bool& checkForCancel)
    : sender_(sender), onProgress_(onProgress), checkForCancel_(checkForCancel) {}

void SendProgress::SetCurrentTransformation(const QString& name) {
    currentTransformation_ = name;
    // The text ends in a blank.
    if (onProgress_) onProgress_(&sender_, 0, QStringLiteral("Forbereder overføring av %1... ").arg(name));
}

void SendProgress::DoProgress(const QString& text, int value, bool force, int total) {
    if (total == 0) return;
    const QString numbers = QStringLiteral("%1: %2 av %3").arg(text, QString::number(value), QString::number(total));
    if (checkForCancel_) throw EngineError(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: (%1)").arg(numbers));
    if (!force && value % kEveryRows != 0) return;
    if (onProgress_) onProgress_(&sender_, static_cast<int>(qint64{value} * 100 / total), numbers);
}

void SendProgress::ldrGeneralProgress(int percent) {
    if (checkForCancel_)
        throw EngineError(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: (%1: %2)")
                              .arg(currentTransformation_, QString::number(percent)));
    if (onProgress_ && ShouldReport(currentTransformation_, percent, kEveryPercent))
        onProgress_(&sender_, percent, currentTransformation_);
}

bool SendProgress::ShouldReport(const QString& name, int value, int step) {
    const bool report = name != previousTransformation_ || (value != previousTransformationProgressValue_ &&
                                                            value - lastLdrGeneralProgressUpdate_ >= step);
    if (report) lastLdrGeneralProgressUpdate_ = value;
    previousTransformation_ = name;
    previousTransformationProgressValue_ = value;
    return report;
}

}  // namespace torvik
