#include "inbound/pairs/pair_notes.h"

#include <QFile>
#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#else
#include <io.h>
#endif

#include "engine/base/abort.h"

namespace torvik {

namespace {

const QString kIdentity = QStringLiteral("notat.id");
const QString kNotes = QStringLiteral("par-*.json");

[[noreturn]] void refuse(const QString& file, const QString& reason) {
    throw EngineError(QStringLiteral("Klarte ikke å skrive notatet \"%1\": %2").arg(file, reason));
}

bool flushToDisk(int handle) {
#ifdef Q_OS_UNIX
    return ::fsync(handle) == 0;
#else
    return ::_commit(handle) == 0;
#endif
}

// A new file's name is on the disk once its folder is.
void flushFolder(const QString& folder) {
#ifdef Q_OS_UNIX
    const int handle = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    if (handle < 0) refuse(folder, qt_error_string());
    const bool flushed = flushToDisk(handle);
    const QString reason = qt_error_string();
    ::close(handle);
    if (!flushed) refuse(folder, reason);
#else
    Q_UNUSED(folder)
#endif
}

// A new file, whole and on the disk, or not there: written beside, flushed, and named last. QSaveFile would not do: it
// does not hear of an error that its own buffer meets.
void writeDurably(const QDir& folder, const QString& name, const QByteArray& content) {
    const QString path = folder.filePath(name);
    QFile file(path + QStringLiteral(".ny"));
    QString reason;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        reason = file.errorString();
    else if (file.write(content) != content.size())
        reason = file.error() == QFile::NoError ? QStringLiteral("disken er full") : file.errorString();
    else if (!flushToDisk(file.handle()))
        reason = qt_error_string();
    file.close();
    if (reason.isEmpty() && !file.rename(path)) reason = file.errorString();
    if (!reason.isEmpty()) {
        file.remove();
        refuse(path, reason);
    }
    flushFolder(folder.path());
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Klarte ikke å lese notatet \"%1\": %2").arg(path, file.errorString()));
    return file.readAll();
}

// Two copies that begin at once agree on one: the second does not replace the first's.
void makeIdentity(const QDir& folder) {
    const QUuid id = QUuid::createUuid();
    const QString own = QStringLiteral("%1.%2").arg(kIdentity, id.toString(QUuid::WithoutBraces));
    writeDurably(folder, own, id.toString().toUtf8());
    if (!QFile::rename(folder.filePath(own), folder.filePath(kIdentity))) QFile::remove(folder.filePath(own));
    flushFolder(folder.path());
}

PairNote noteIn(const QString& path) {
    try {
        return PairNote::fromJson(contentOf(path));
    } catch (const EngineError& e) {
        throw EngineError(QStringLiteral("Klarte ikke å lese notatet \"%1\": %2").arg(path, ErrorText(e)));
    }
}

}  // namespace

QUuid PairNotes::storeId() const {
    if (!folder_.mkpath(QStringLiteral("."))) refuse(folder_.path(), qt_error_string());
    const QString path = folder_.filePath(kIdentity);
    if (!QFile::exists(path)) makeIdentity(folder_);
    const QUuid id(QString::fromUtf8(contentOf(path)).trimmed());
    if (id.isNull()) refuse(path, QStringLiteral("ugyldig innhold"));
    return id;
}

QString PairNotes::fileOf(const QUuid& pair) const {
    return folder_.filePath(QStringLiteral("par-%1.json").arg(pair.toString(QUuid::WithoutBraces)));
}

void PairNotes::write(const PairNote& note) const {
    writeDurably(folder_, QFileInfo(fileOf(note.intent.id)).fileName(), note.toJson());
}

std::optional<PairNote> PairNotes::read(const QUuid& pair) const {
    const QString path = fileOf(pair);
    if (!QFile::exists(path)) return {};
    return noteIn(path);
}

std::vector<PairNote> PairNotes::ofTill(int Ik_Ku_Id, const QString& KasseNr) const {
    std::vector<PairNote> notes;
    for (const QString& name : folder_.entryList({kNotes}, QDir::Files, QDir::Name)) {
        try {
            PairNote note = noteIn(folder_.filePath(name));
            if (note.Ik_Ku_Id == Ik_Ku_Id && note.KasseNr == KasseNr) notes.push_back(std::move(note));
        } catch (const EngineError&) {
            // left where it is
        }
    }
    return notes;
}

void PairNotes::remove(const QUuid& pair) const noexcept {
    QFile::remove(fileOf(pair));
}

}  // namespace torvik
