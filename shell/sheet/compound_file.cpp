// Sectors in the order: the stream's, the directory's, those of the sector table, those of the list of the latter that
// the header has no room for.
#include "shell/sheet/compound_file.h"

#include <QSaveFile>
#include <limits>

#include "engine/base/abort.h"
#include "shell/sheet/little_endian.h"

namespace torvik {

namespace {

constexpr qsizetype kSector = 512;
constexpr qsizetype kSmallStream = 4096;  // shorter ones would stand in a mini stream
constexpr quint32 kEntries = kSector / 4;
constexpr quint32 kInHeader = 109;  // table sectors that the header names

constexpr quint32 kFree = 0xFFFFFFFF;
constexpr quint32 kEndOfChain = 0xFFFFFFFE;
constexpr quint32 kTableSector = 0xFFFFFFFD;
constexpr quint32 kListSector = 0xFFFFFFFC;

quint32 parts(quint32 whole, quint32 size) {
    return (whole + size - 1) / size;
}

// How many sectors of each kind a stream takes.
struct Layout {
    quint32 stream;
    quint32 table = 0;
    quint32 list = 0;

    explicit Layout(quint32 streamSectors) : stream(streamSectors) {
        for (quint32 before = kFree; before != table + list;) {
            before = table + list;
            table = parts(stream + 1 + table + list, kEntries);
            list = table > kInHeader ? parts(table - kInHeader, kEntries - 1) : 0;
        }
    }
    [[nodiscard]] quint32 directory() const { return stream; }
    [[nodiscard]] quint32 firstTable() const { return stream + 1; }
    [[nodiscard]] quint32 firstList() const { return firstTable() + table; }
};

void fillSector(QByteArray& bytes, quint32 with) {
    while (bytes.size() % kSector != 0) append32(bytes, with);
}

QByteArray header(const Layout& layout) {
    QByteArray bytes = QByteArray::fromHex("D0CF11E0A1B11AE1");
    bytes.append(16, '\0');
    append16(bytes, 0x003E);  // minor and major version
    append16(bytes, 3);
    append16(bytes, 0xFFFE);  // little-endian
    append16(bytes, 9);       // sectors of 512 bytes, mini sectors of 64
    append16(bytes, 6);
    bytes.append(10, '\0');
    append32(bytes, layout.table);
    append32(bytes, layout.directory());
    append32(bytes, 0);
    append32(bytes, kSmallStream);
    append32(bytes, kEndOfChain);  // no mini stream
    append32(bytes, 0);
    append32(bytes, layout.list > 0 ? layout.firstList() : kEndOfChain);
    append32(bytes, layout.list);
    for (quint32 i = 0; i < kInHeader; ++i) append32(bytes, i < layout.table ? layout.firstTable() + i : kFree);
    return bytes;
}

void appendEntry(QByteArray& bytes, const QString& name, int kind, quint32 child, quint32 start, quint32 size) {
    const qsizetype begin = bytes.size();
    appendUtf16(bytes, name);
    bytes.append(begin + 64 - bytes.size(), '\0');
    append16(bytes, name.isEmpty() ? 0 : static_cast<int>(2 * (name.size() + 1)));
    append8(bytes, kind);
    append8(bytes, 1);  // black
    append32(bytes, kFree);
    append32(bytes, kFree);
    append32(bytes, child);
    bytes.append(36, '\0');  // class, state, times
    append32(bytes, start);
    append32(bytes, size);
    append32(bytes, 0);
}

QByteArray directory(const QString& streamName, quint32 size) {
    constexpr int kStream = 2;
    constexpr int kRoot = 5;
    QByteArray bytes;
    appendEntry(bytes, QStringLiteral("Root Entry"), kRoot, 1, kEndOfChain, 0);
    appendEntry(bytes, streamName, kStream, kFree, 0, size);
    appendEntry(bytes, QString(), 0, kFree, 0, 0);
    appendEntry(bytes, QString(), 0, kFree, 0, 0);
    return bytes;
}

QByteArray sectorTable(const Layout& layout) {
    QByteArray bytes;
    for (quint32 i = 0; i + 1 < layout.stream; ++i) append32(bytes, i + 1);
    append32(bytes, kEndOfChain);
    append32(bytes, kEndOfChain);  // the directory's one sector
    for (quint32 i = 0; i < layout.table; ++i) append32(bytes, kTableSector);
    for (quint32 i = 0; i < layout.list; ++i) append32(bytes, kListSector);
    fillSector(bytes, kFree);
    return bytes;
}

// A sector of the list ends with the number of the next.
QByteArray tableList(const Layout& layout) {
    QByteArray bytes;
    quint32 next = layout.firstList() + 1;
    for (quint32 i = kInHeader; i < layout.table; ++i) {
        append32(bytes, layout.firstTable() + i);
        if (bytes.size() % kSector == kSector - 4 && i + 1 < layout.table) append32(bytes, next++);
    }
    while (bytes.size() % kSector != kSector - 4 && !bytes.isEmpty()) append32(bytes, kFree);
    if (!bytes.isEmpty()) append32(bytes, kEndOfChain);
    return bytes;
}

}  // namespace

void writeCompoundFile(const QString& file, const QString& streamName, QByteArray stream) {
    const auto refused = [&file](const QString& reason) {
        return EngineError(QStringLiteral("Klarte ikke å skrive %1: %2").arg(file, reason));
    };
    if (stream.size() > std::numeric_limits<qint32>::max() - kSector)
        throw refused(QStringLiteral("resultatet er for stort for et slikt regneark"));
    if (stream.size() < kSmallStream) stream.append(kSmallStream - stream.size(), '\0');
    const auto size = static_cast<quint32>(stream.size());
    if (stream.size() % kSector != 0) stream.append(kSector - stream.size() % kSector, '\0');
    const Layout layout(static_cast<quint32>(stream.size() / kSector));
    QSaveFile out(file);
    bool written = out.open(QIODevice::WriteOnly);
    for (const QByteArray& part :
         {header(layout), stream, directory(streamName, size), sectorTable(layout), tableList(layout)})
        written = written && out.write(part) == part.size();
    if (!written || !out.commit()) throw refused(out.errorString());
}

}  // namespace torvik
