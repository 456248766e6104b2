// What the tests of work on the fleet share: a demo chain, the engine over all of its tills, files to send, and what
// BINARYOBJECT holds. Five tills can be put in five states, of which one serves.
#pragma once

#include "engine/status/oppgjor_status.h"
#include "tests/support/chain_run.h"

namespace torvik::test {

class FleetRun : public ChainRun {
public:
    explicit FleetRun(const sandbox::chain::ChainOptions& options);
    // One department with one till of a version.
    static sandbox::chain::ChainOptions oneTill(int version) { return tills({version}); }
    static sandbox::chain::ChainOptions tills(std::vector<int> versions);

    // The tills behind the first: off, refuses the login, loses the connection at the first request that holds the
    // text, has no table BINARYOBJECT.
    void spoilTills(const std::string& dropsAt);
    // The login is taken again, so that the till can be looked into.
    void allowLogins();

    // A local file; gives its full name.
    QString file(const QString& name, const QByteArray& content);
    // Of that many bytes; no shift or repetition of a piece is the same.
    [[nodiscard]] static QByteArray bytes(qsizetype count);

    // BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS and the bytes, in the order of the numbers.
    [[nodiscard]] std::vector<std::string> objects(std::size_t till) const;
    // One such row.
    [[nodiscard]] static std::string object(int id, const char* type, int direction, const QByteArray& content);
    // The bytes of the one row of a type; raises when there is not one.
    [[nodiscard]] QByteArray objectOf(std::size_t till, const std::string& type) const;

    [[nodiscard]] RunParts& parts() { return engine.Parts(); }
    // The log but for its waits and its notes of versions.
    [[nodiscard]] QStringList lines() const;
};

}  // namespace torvik::test
