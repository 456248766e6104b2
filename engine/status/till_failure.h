// A failure that befell a till in a run, kept for the operator who asks for the whole story of it. A walk adds it
// through RunParts::KeepFailure; the status frame holds it until the next run.
#pragma once

#include <QDateTime>

#include "engine/base/failure_facts.h"

namespace torvik {

struct TillFailure {
    QDateTime At;
    FailureFacts Facts;
    bool OfficeLost = false;  // it was the back office's connection that was lost, not the till's
};

}  // namespace torvik
