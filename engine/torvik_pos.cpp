#include "engine/torvik_pos.h"

#include "engine/db/session.h"
#include "engine/run/settlement_run.h"
#include "engine/status/show_kasse_logs.h"

namespace torvik {

namespace {
constexpr int kTimerIntervalMs = 30000;
}

TTorvikPos::TTorvikPos(QObject* owner, Seams seams)
    : QObject(owner),
      Seam(std::move(seams)),
      parts_({Seam, *this, *this, this}, *this),
      night_(parts_),
      heard_(parts_.Control, [this](bool requested) {
          if (OnCancelRequestChanged) OnCancelRequestChanged(requested);
      }) {
    FTimer.setInterval(kTimerIntervalMs);
    connect(&FTimer, &QTimer::timeout, this, [this] { night_.Tick(); });
}

TTorvikPos::~TTorvikPos() = default;

void TTorvikPos::SetAutoCommunicate(bool value) {
    FAutoCommunicate = value;
    value ? FTimer.start() : FTimer.stop();
}

void TTorvikPos::CancelConnectAttempt(db::Session* AConnection) {
    if (AConnection && AConnection->Connected()) AConnection->Close();
}

void TTorvikPos::ShowKasseLogs(bool ClearFirst, TKasseCollection& KasseCollection, bool OnlyNew,
                               TfraOppgjorStatus* Frame) {
    torvik::ShowKasseLogs(ClearFirst, KasseCollection, OnlyNew, Frame, Tasks);
}

void TTorvikPos::ExecuteOppgjor() {
    torvik::ExecuteOppgjor(parts_);
}

void TTorvikPos::InitializeTorvikPOS(int Ku_Id, const QString& Kassenummer) {
    RunOperation reset;
    if (OnInitializeTorvikPOS) reset = [&](RunParts& parts) { OnInitializeTorvikPOS(parts, Ku_Id, Kassenummer); };
    parts_.Execute(reset, u"InitializeTorvikPOS");
}

}  // namespace torvik
