// See bulk_loader.h.
#include "engine/db/bulk_loader.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <utility>
#include <vector>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/meanwhile.h"
#include "engine/db/query.h"
#include "engine/db/row_sender.h"
#include "engine/db/table_shapes.h"

namespace torvik::db {

namespace {

using Clock = std::chrono::steady_clock;

// So long may a window go without a call, but for one block's time on the server.
constexpr std::chrono::milliseconds kCallEvery{20};

// So long may a block take: a slow server is given smaller ones, down to the fewest rows.
constexpr std::chrono::milliseconds kBlockTime{20};
constexpr int kFewestRows = 100;

// The rows that a server takes in that time, when so many took so long: no less than half as many, no more than twice.
int rowsThatFit(int rows, Clock::duration took) {
    const double fit = std::chrono::duration<double>(kBlockTime) / std::max(took, Clock::duration(1));
    return int(rows * std::clamp(fit, 0.5, 2.0));
}

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

// One load under way. While a block is on its way to the target, on a thread of its own, the next one is read.
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
    void send();
    void awaitBlock();
    [[nodiscard]] bool blockHasGone() const;
    void sendRest();
    [[nodiscard]] int percent() const;
    void progress();
    void tellDue();

    BulkLoader& loader_;
    Session& session_;
    DataSet& source_;
    const Query* query_ = dynamic_cast<const Query*>(&source_);  // where it is one
    std::shared_ptr<TableShape> target_;
    std::vector<int> places_;
    std::unique_ptr<RowSender> sender_;  // from the first row on
    bool ownTransactions_ = false;       // likewise
    RowBlock block_;                     // being read
    qint64 taken_ = 0;
    qint64 inBatch_ = 0;
    int blockRows_ = 1;
    int percent_ = -1;
    std::vector<int> due_;  // percentages to be told
    Clock::time_point called_ = Clock::now();

    // The block on its way; until it has gone, these and the session are its thread's.
    std::future<void> going_;
    RowBlock goingBlock_;
    bool endsBatch_ = false;
    bool begun_ = false;  // one of the load's own transactions is open
    Clock::duration took_{};
    int sentRows_ = 0;
};

std::shared_ptr<TableShape> BulkLoader::Load::shape() {
    auto& connection = session_.use();
    if (loader_.Shapes) return loader_.Shapes->Of(connection, loader_.TableName, loader_.CommandTimeout);
    return std::make_shared<TableShape>(tableShape(connection, loader_.TableName, loader_.CommandTimeout));
}

// The failure of a block is that of earlier rows: it comes before what was met when reading on.
qint64 BulkLoader::Load::run() {
    try {
        for (source_.First(); !source_.Eof(); source_.Next()) {
            take();
            if (int(block_.Rows) >= blockRows_ || inBatch_ == loader_.Options.RowsPerBatch) sendBlock();
            progress();
        }
        awaitBlock();
        tellDue();
        sendRest();
    } catch (...) {
        std::exception_ptr failure = std::current_exception();
        try {
            awaitBlock();
        } catch (...) {
            failure = std::current_exception();
        }
        if (begun_) session_.Rollback();
        std::rethrow_exception(failure);
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

// A batch begins with its first block, which may be one that needs no round trip for that.
void BulkLoader::Load::beginBatch() {
    if (!ownTransactions_ || begun_) return;
    session_.StartTransaction();
    begun_ = true;
}

// Takes the source's current row, each value as the target's type.
void BulkLoader::Load::take() {
    if (!sender_) beginLoad();
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

// Sends the block that has been read when the one before it has gone. Single rows are not worth a thread.
void BulkLoader::Load::sendBlock() {
    awaitBlock();
    progress();
    std::swap(goingBlock_, block_);
    endsBatch_ = inBatch_ == loader_.Options.RowsPerBatch;
    if (endsBatch_) inBatch_ = 0;
    if (sender_->bestBlock() == 1) return send();
    going_ = std::async(std::launch::async, [this] { send(); });
}

void BulkLoader::Load::send() {
    const Clock::time_point start = Clock::now();
    if (goingBlock_.Rows > 0) {
        beginBatch();
        sender_->send(session_.use(), goingBlock_);
    }
    took_ = Clock::now() - start;
    sentRows_ = int(goingBlock_.Rows);
    goingBlock_.Values.clear();
    goingBlock_.Rows = 0;
    if (!endsBatch_ || !begun_) return;
    session_.Commit();
    begun_ = false;
}

// Raises what the block's thread met.
void BulkLoader::Load::awaitBlock() {
    if (!going_.valid()) return;
    serverCall([this] { going_.wait(); });
    going_.get();
    if (loader_.Options.FewRoundTrips || sentRows_ < blockRows_) return;
    const int best = sender_->bestBlock();
    blockRows_ = std::clamp(rowsThatFit(sentRows_, took_), std::min(kFewestRows, best), best);
}

bool BulkLoader::Load::blockHasGone() const {
    return !going_.valid() || going_.wait_for(Clock::duration::zero()) == std::future_status::ready;
}

void BulkLoader::Load::sendRest() {
    std::swap(goingBlock_, block_);
    endsBatch_ = true;
    const bool alone = loader_.Options.FewRoundTrips && !begun_ && goingBlock_.Rows > 0;
    if (alone && sender_->sendAlone(session_.use(), goingBlock_)) return;
    send();
}

int BulkLoader::Load::percent() const {
    const qint64 count = !query_ || query_->RowCountKnown() ? source_.RecordCount() : 0;
    return count == 0 ? 0 : int(std::min<qint64>(taken_ * 100 / count, 99));
}

// The callback may use both sessions: what is due while a block is on its way is told when that has gone.
void BulkLoader::Load::progress() {
    if (!loader_.OnProgress) return;
    if (const int now = percent(); now != percent_) due_.push_back(percent_ = now);
    if ((due_.empty() && Clock::now() - called_ < kCallEvery) || !blockHasGone()) return;
    awaitBlock();
    if (due_.empty()) due_.push_back(percent_);
    tellDue();
}

void BulkLoader::Load::tellDue() {
    for (const int each : std::exchange(due_, {})) loader_.OnProgress(loader_, each);
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
