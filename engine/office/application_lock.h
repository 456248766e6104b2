// A lock of the back office's own lock manager (sp_getapplock), by which copies of the program keep out of each other's
// way. The session owns it: it goes with the session, at a crash too, so a statement that this session still answers
// proves that the lock is still held. See docs/engine.md.
#pragma once

#include <QString>
#include <QStringList>

namespace torvik {

namespace db {
class Session;
}

class ApplicationLock {
public:
    // Asks for the lock without waiting for it. Raises what the session raises, and EngineError for an answer that is
    // neither yes nor no. `question` is a SELECT of one column that is asked behind the lock, in the same round trip.
    ApplicationLock(db::Session& office, const QString& name, const QString& question = {});
    ~ApplicationLock();
    ApplicationLock(const ApplicationLock&) = delete;
    ApplicationLock& operator=(const ApplicationLock&) = delete;

    // False: another session holds it.
    [[nodiscard]] bool Held() const { return held_; }
    // The rows that answer the question.
    [[nodiscard]] const QStringList& Answer() const { return answer_; }

    // The locks' names: the visit at one till, and the stock counts, whose stage is one for the chain.
    [[nodiscard]] static QString OfTill(int Ik_Ku_Id, const QString& kassenummer);
    [[nodiscard]] static QString OfStockCounts();

private:
    db::Session& office_;
    QString name_;
    bool held_ = false;
    QStringList answer_;
};

}  // namespace torvik
