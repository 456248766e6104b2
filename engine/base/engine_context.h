// The surroundings that every part of the engine shares: what it takes from the system, the run's options, the events.
// References only: the engine object outlives its parts.
#pragma once

class QObject;

namespace torvik {

struct EngineEvents;
struct RunOptions;
struct Seams;

struct EngineContext {
    const Seams& Seam;
    RunOptions& Options;
    const EngineEvents& Events;
    QObject* Sender;  // the engine, as events name it
};

}  // namespace torvik
