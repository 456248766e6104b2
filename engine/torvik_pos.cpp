// Life of the engine object: what it is made of, the sessions it works on, the timer.
#include "engine/torvik_pos.h"

#include "engine/base/abort.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/status/oppgjor_status.h"

namespace torvik {

namespace {

constexpr int kTimerIntervalMs = 30000;
constexpr int kQueryTimeoutSeconds = 600;

bool lastRunAsService = false;

std::unique_ptr<db::Query> newQuery() {
    auto query = std::make_unique<db::Query>();
    query->CommandTimeout = kQueryTimeoutSeconds;
    return query;
}

}  // namespace

TTorvikPos::TTorvikPos(QObject* owner, Seams seams)
    : QObject(owner),
      Seam(std::move(seams)),
      Avdeling(std::make_unique<TAvdeling>(*this, nullptr)),
      ffraOppgjorStatus(std::make_unique<TfraOppgjorStatus>()),
      FqryGeneralTarget(newQuery()),
      FqryIdTarget(newQuery()),
      Vare(std::make_unique<db::MemTable>()),
      VareAlias(std::make_unique<db::MemTable>()),
      _ownPane(std::make_unique<StringListPane>()) {
    Log = _ownPane.get();
    FTimer.setInterval(kTimerIntervalMs);
    connect(&FTimer, &QTimer::timeout, this, [this] {
        // An exception must not travel through the event loop.
        try {
            DoOnTimer();
        } catch (...) {
            timerFailed(std::current_exception());
        }
    });
}

TTorvikPos::~TTorvikPos() = default;

void TTorvikPos::SetTargetConnection(db::Session* value) {
    FTargeTMSConnection = value;
    FqryGeneralTarget->Close();
    FqryGeneralTarget->SetConnection(value);
}

void TTorvikPos::SetAutoCommunicate(bool value) {
    FAutoCommunicate = value;
    if (value) {
        FTimer.start();
    } else {
        FTimer.stop();
    }
}

void TTorvikPos::timerFailed(const std::exception_ptr& failure) {
    if (OnTimerException) {
        OnTimerException(failure);
        return;
    }
    try {
        std::rethrow_exception(failure);
    } catch (const EAbort&) {
    } catch (const std::exception& error) {
        AddLog(ErrorText(error), true);
    }
}

void TTorvikPos::SetRunAsService(bool value) {
    FRunAsService = value;
    lastRunAsService = value;
}

bool TTorvikPos::LastRunAsService() {
    return lastRunAsService;
}

void TTorvikPos::ExecuteDTSToPos() {
    if (!OnExecuteDTSToPos) throw EngineError(QStringLiteral("ExecuteDTSToPos finnes ikke i dette programmet"));
    OnExecuteDTSToPos(*this);
}

void TTorvikPos::ExecuteVaretelling() {
    if (!OnExecuteVaretelling) throw EngineError(QStringLiteral("ExecuteVaretelling finnes ikke i dette programmet"));
    OnExecuteVaretelling(*this);
}

}  // namespace torvik
