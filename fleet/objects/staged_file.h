// A file's bytes in a temporary table of a session, in pieces, so that one statement can take them as one value. Used
// by writeBinaryObject.
#pragma once

#include <QString>
#include <functional>

namespace torvik {

namespace db {
class Session;
}

class StagedFile {
public:
    // Makes the temporary table, which ends with the session.
    explicit StagedFile(db::Session& session);

    // Sends the file. between: called after each piece, so that a window stays alive. Raises EngineError when the file
    // cannot be read, or was longer or shorter at its end than at its beginning.
    void load(const QString& file, const std::function<void()>& between);
    // SQL of the whole value, to stand in a statement of the same session.
    [[nodiscard]] QString expression() const;

private:
    void send(const QByteArray& piece);

    db::Session& session_;
    int pieces_ = 0;
};

}  // namespace torvik
