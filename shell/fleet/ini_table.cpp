#include "shell/fleet/ini_table.h"

#include "fleet/ini/ini_text.h"

namespace torvik {

namespace {

constexpr qsizetype kPrinterLength = 100;
constexpr qsizetype kNameLength = 50;

struct ColumnRow {
    const char* band;
    const char* caption;
};
constexpr ColumnRow kColumns[] = {
    {"Avdeling", "Avd.nr."},      {"Avdeling", "Kassenr."},
    {"Avdeling", "Navn"},         {"Håndterminal", "Aktivert"},
    {"Håndterminal", "Skriver"},  {"Bankterminal", "Type"},
    {"Bankterminal", "Aktivert"}, {"Komplett TorvikPOS.ini", "Innhold"},
};
static_assert(std::size(kColumns) == IniTable::ColumnCount);

constexpr const char* kTerminals[] = {"Ingen",      "Bopos", "Point",    "SteriaPAY", "Babs Paylink",
                                      "Autodetect", "Baxi",  "Paypoint", "Baxi.NET",  "Verifone"};

}  // namespace

QString IniTable::terminalName(int type) {
    if (type < 0 || type >= static_cast<int>(std::size(kTerminals))) return QStringLiteral("Ukjent");
    return QString::fromUtf8(kTerminals[type]);
}

void IniTable::clear() {
    beginResetModel();
    rows_.clear();
    endResetModel();
}

void IniTable::append(const QString& avdNr, const QString& kassenr, const QString& navn, const QStringList& lines) {
    const IniText ini(lines);
    Row row;
    row.AvdNr = avdNr;
    row.Kassenr = kassenr;
    row.Navn = navn.left(kNameLength);
    row.CEDeviceEnabled = ini.boolean(QStringLiteral("CEDevice"), QStringLiteral("Enabled"), false);
    row.LabelPrinterName =
        ini.value(QStringLiteral("Labels"), QStringLiteral("PrinterName")).left(kPrinterLength).trimmed();
    row.TerminalType = terminalName(ini.integer(QStringLiteral("Bankterminal"), QStringLiteral("TerminalType"), 0));
    row.TerminalActive = ini.boolean(QStringLiteral("General"), QStringLiteral("BankTerminalIsActive"), false);
    row.Ini = lines.isEmpty() ? QString() : lines.join(u'\n') + u'\n';
    const int at = static_cast<int>(rows_.size());
    beginInsertRows({}, at, at);
    rows_.push_back(std::move(row));
    endInsertRows();
}

int IniTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int IniTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant IniTable::data(const QModelIndex& index, int role) const {
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    const auto mark = [role](bool on) -> QVariant {
        if (role == Qt::CheckStateRole) return on ? Qt::Checked : Qt::Unchecked;
        return role == Qt::EditRole ? QVariant(on) : QVariant();
    };
    if (index.column() == CEDeviceEnabled) return mark(row.CEDeviceEnabled);
    if (index.column() == TerminalActive) return mark(row.TerminalActive);
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    switch (index.column()) {
        case AvdNr: return row.AvdNr;
        case Kassenr: return row.Kassenr;
        case Navn: return row.Navn;
        case LabelPrinterName: return row.LabelPrinterName;
        case TerminalType: return row.TerminalType;
        case Ini: return role == Qt::EditRole ? row.Ini : row.Ini.section(u'\n', 0, 0);
        default: return {};
    }
}

QVariant IniTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    const ColumnRow& column = kColumns[section];
    return QString::fromUtf8(column.band) + u'\n' + QString::fromUtf8(column.caption);
}

}  // namespace torvik
