// See bulk_loader.h.
#include "engine/db/bulk_loader.h"

#include <algorithm>
#include <chrono>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/row_sender.h"
#include "engine/db/table_shapes.h"

namespace torvik::db {

namespace {

using Clock = std::chrono::steady_clock;

// So long may a window go without a call, but for one block's time on the server.
constexpr std::chrono::milliseconds kCallEvery{20};

// A slow server is given smaller blocks, down to this.
constexpr int kFewestRows = 100;

// The places of the source's columns in the target.
std::vector<int> matched(const DataSet& source, const TableShape& target) {
    std::vector<int> places;
    QStringList missing;
    for (const QString& name : source.FieldNames()) {
        places.push_back(target.place(name));
        if (places.back() < 0) missing += name;
    }
    if (!missing.isEmpty())
        throw UsageError(
            QStringLiteral("Table %1 lacks the columns %2").arg(target.Name, missing.join(QStringLiteral(", "))));
    return places;
}

}  // namespace

// One load under way.
class BulkLoader::Load {
public:
    Load(BulkLoader& loader, DataSet& source)
        : loader_(loader),
          session_(*loader.session_),
          source_(source),
          target_(shape()),
          places_(matched(source, *target_)) {}

    qint64 run();

private:
    [[nodiscard]] std::shared_ptr<TableShape> shape();
    void beginLoad();
    void beginBatch();
    void take();
    void sendBlock();
    void endBatch();
    void sendRest();
    void progress();

    BulkLoader& loader_;
    Session& session_;
    DataSet& source_;
    const Query* query_ = dynamic_cast<const Query*>(&source_);  // where it is one
    std::shared_ptr<TableShape> target_;
    std::vector<int> places_;
    std::unique_ptr<RowSender> sender_;  // from the first row on
    bool ownTransactions_ = false;       // likewise
    bool begun_ = false;                 // one of those is open
    RowBlock block_;
    qint64 taken_ = 0;
    qint64 inBatch_ = 0;
    int blockRows_ = 1;
    int percent_ = -1;
    Clock::time_point called_ = Clock::now();
};

std::shared_ptr<TableShape> BulkLoader::Load::shape() {
    auto& connection = session_.use();
    if (loader_.Shapes) return loader_.Shapes->Of(connection, loader_.TableName, loader_.CommandTimeout);
    return std::make_shared<TableShape>(tableShape(connection, loader_.TableName, loader_.CommandTimeout));
}

qint64 BulkLoader::Load::run() {
    try {
        for (source_.First(); !source_.Eof(); source_.Next()) {
            take();
            if (int(block_.Rows) >= blockRows_ || inBatch_ == loader_.Options.RowsPerBatch) sendBlock();
            if (inBatch_ == loader_.Options.RowsPerBatch) endBatch();
            progress();
        }
        sendRest();
    } catch (...) {
        if (begun_) session_.Rollback();
        throw;
    }
    if (loader_.OnProgress) loader_.OnProgress(loader_, 100);
    return sender_ ? sender_->confirmed() : 0;
}

// What the server is asked for the rows' sake is asked when there are any.
void BulkLoader::Load::beginLoad() {
    const bool fewTrips = loader_.Options.FewRoundTrips;
    sender_ = std::make_unique<RowSender>(session_, session_.use(), *target_, places_, loader_.CommandTimeout);
    blockRows_ = fewTrips ? sender_->largestBlock() : sender_->bestBlock();
    ownTransactions_ = fewTrips || !session_.InTransaction();
}

// With few round trips a batch begins with its first block: it may be one that needs no round trip for that.
void BulkLoader::Load::beginBatch() {
    if (!ownTransactions_ || begun_) return;
    session_.StartTransaction();
    begun_ = true;
}

// Takes the source's current row, each value as the target's type.
void BulkLoader::Load::take() {
    if (!sender_) beginLoad();
    if (!loader_.Options.FewRoundTrips) beginBatch();
    for (size_t i = 0; i < places_.size(); ++i) {
        const FieldInfo& field = target_->Fields[size_t(places_[i])];
        try {
            block_.Values.push_back(convertTo(source_.Fields(int(i)).AsValue(), field.Type));
        } catch (const UsageError& e) {
            throw UsageError(
                QStringLiteral("%1 for field '%2' in row %3").arg(e.text(), field.Name, QString::number(taken_ + 1)));
        }
    }
    ++block_.Rows;
    ++inBatch_;
    ++taken_;
}

void BulkLoader::Load::sendBlock() {
    if (block_.Rows == 0) return;
    beginBatch();
    const Clock::time_point start = Clock::now();
    sender_->send(session_.use(), block_);
    const auto took = Clock::now() - start;
    block_.Values.clear();
    block_.Rows = 0;
    if (loader_.Options.FewRoundTrips) return;
    if (took > kCallEvery) blockRows_ = std::max(blockRows_ / 2, std::min(kFewestRows, sender_->bestBlock()));
    if (took < kCallEvery / 4) blockRows_ = std::min(blockRows_ * 2, sender_->bestBlock());
}

void BulkLoader::Load::endBatch() {
    if (begun_) session_.Commit();
    begun_ = false;
    inBatch_ = 0;
}

void BulkLoader::Load::sendRest() {
    const bool alone = loader_.Options.FewRoundTrips && !begun_ && block_.Rows > 0;
    if (alone && sender_->sendAlone(session_.use(), block_)) return;
    sendBlock();
    endBatch();
}

void BulkLoader::Load::progress() {
    if (!loader_.OnProgress) return;
    const qint64 count = !query_ || query_->RowCountKnown() ? source_.RecordCount() : 0;
    const int percent = count == 0 ? 0 : int(std::min<qint64>(taken_ * 100 / count, 99));
    const Clock::time_point now = Clock::now();
    if (percent == percent_ && now - called_ < kCallEvery) return;
    percent_ = percent;
    loader_.OnProgress(loader_, percent);
    called_ = Clock::now();
}

qint64 BulkLoader::LoadFromDataSet(DataSet& source) {
    if (!session_) throw UsageError(QStringLiteral("The bulk loader has no connection"));
    const auto* query = dynamic_cast<const Query*>(&source);
    if (query && query->Connection() == session_ && query->UniDirectional)
        throw UsageError(QStringLiteral("A unidirectional query cannot be loaded over its own session"));
    return Load(*this, source).run();
}

}  // namespace torvik::db
