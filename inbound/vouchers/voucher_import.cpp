#include "inbound/vouchers/voucher_import.h"

#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/db/statement_text.h"
#include "engine/log/operator_log.h"
#include "logging/logger.h"

namespace torvik {

namespace {

constexpr int kLinesABatch = 64;

constexpr char kTimeOfTill[] = "SELECT CONVERT(varchar(23), GETDATE(), 121)";

}  // namespace

VoucherImport::VoucherImport(const VoucherKind& kind, const TillVisit& visit, int timeout)
    : kind_(kind), visit_(visit), onTill_(&visit.TillSession), batch_(&visit.OfficeSession), timeout_(timeout) {
    for (db::Query* query : {&onTill_, &batch_}) {
        query->ParamCheck = false;
        query->CommandTimeout = timeout_;
    }
}

std::vector<TillMark> VoucherImport::run() {
    copyChanged();
    mark();
    return copyWhatChangedMeanwhile();
}

void VoucherImport::copyChanged() {
    onTill_.SQL = QStringList{QString::fromUtf8(kind_.changed)};
    onTill_.Open();
    for (; !onTill_.Eof(); onTill_.Next()) {
        add(VoucherRow(kind_, onTill_));
        if (batch_.SQL.size() % kLinesABatch == 0) dropOrSend();
    }
    send();
    onTill_.Close();
}

void VoucherImport::mark() {
    onTill_.SQL = QStringList{QString::fromUtf8(kTimeOfTill)};
    onTill_.Open();
    markedSince_ = onTill_.Fields(0).AsString();
    onTill_.Close();
    onTill_.SQL = QStringList{QString::fromUtf8(kind_.mark)};
    onTill_.ExecSQL();
    marked_ = onTill_.RowsAffected();
}

// The marked rows are ours until the commit. A card that the till issued or redeemed while the others were copied has
// been marked with them: whatever was not copied as it stands now is copied here, and nothing is given up.
std::vector<TillMark> VoucherImport::copyWhatChangedMeanwhile() {
    std::vector<TillMark> marks;
    onTill_.SQL = statementLines(kind_.markedSince);
    onTill_.ParamCheck = true;
    onTill_.ParamByName(QStringLiteral("Fra")) = markedSince_;
    onTill_.Open();
    for (; !onTill_.Eof(); onTill_.Next()) {
        const VoucherRow row(kind_, onTill_);
        marks.push_back({kind_.markKind, row.key(), onTill_.FieldByName(QStringLiteral("Merket")).AsString(), {}});
        if (copied_.value(row.name()) == row.statements()) continue;
        add(row);
        if (batch_.SQL.size() % kLinesABatch == 0) send();
    }
    send();
    onTill_.Close();
    // A clock that was set back in between hides marks that were made.
    if (static_cast<qint64>(marks.size()) < marked_)
        throw EngineError(QStringLiteral("Fant %1 av %2 merkede kort på kassen").arg(marks.size()).arg(marked_));
    return marks;
}

void VoucherImport::add(const VoucherRow& row) {
    visit_.Log.AddLog(QString::fromUtf8(kind_.log).arg(row.text("ID")));
    const QStringList statements = row.statements();
    batch_.SQL += statements;
    batchNames_ << row.name();
    if (row.isUnused()) batchUnused_ << row.condition();
    copied_.insert(row.name(), statements);
}

// An error that took the transaction with it, or the session, fails the transfer: what follows would stand by itself.
// Any other drops the batch, and its cards are marked all the same. The look for redemptions is no part of the batch:
// no card is given up for it.
void VoucherImport::dropOrSend() {
    const QStringList names = batchNames_;
    warnOfRedeemed();
    try {
        runBatch();
    } catch (const EAbort&) {
        throw;  // a batch that was ended is no refusal: none of its cards is marked
    } catch (const std::exception& e) {
        if (!visit_.OfficeSession.InTransaction()) throw;
        visit_.Log.AddLog(ErrorText(e), true, kls_Error);
        visit_.Log.AddLog(QString::fromUtf8(kind_.dropped).arg(names.join(QStringLiteral(", "))), true, kls_Error);
    }
}

void VoucherImport::send() {
    warnOfRedeemed();
    runBatch();
}

// The batch is empty afterwards, whatever came of it.
void VoucherImport::runBatch() {
    const auto clear = qScopeGuard([this] {
        batch_.SQL.clear();
        batchNames_.clear();
        batchUnused_.clear();
    });
    if (batch_.SQL.isEmpty()) return;
    batch_.ExecSQL();
}

// The till's word stands: its copy may be older than the redemption that the back office has from another till.
void VoucherImport::warnOfRedeemed() {
    if (batchUnused_.isEmpty()) return;
    db::Query known(&visit_.OfficeSession);
    known.ParamCheck = false;
    known.CommandTimeout = timeout_;
    known.SQL = statementLines(QString::fromUtf8(kind_.redeemed).arg(batchUnused_.join(QStringLiteral("\nOR "))));
    known.Open();
    for (; !known.Eof(); known.Next()) {
        const VoucherRow row(kind_, known);
        visit_.Log.AddLog(
            QStringLiteral("Kort %1 er ubrukt på kassen, men innløst ved måldatabase: %2. Innløsningen slettes")
                .arg(row.name(), row.redemptionText()),
            false, kls_Warning);
        GlobalLogger().LogWarning(
            QStringLiteral("Kort {Kort} er ubrukt ved avdeling {Avdeling} kassenummer {Kassenummer}, men innløst ved "
                           "måldatabase: {Innlost}"),
            {row.name(), visit_.Till.Avdelingsnummer, visit_.Till.Kassenummer, row.redemptionText()});
    }
}

}  // namespace torvik
