// The number that tells one send's choice of items from any other's in VareEksport: drawn at random, and held by an
// application lock of the back office while the send lasts, so that two copies of the program never share one.
#pragma once

#include <QString>
#include <functional>

namespace torvik {

namespace db {
class Session;
}

class SendSessionID {
public:
    static constexpr int kNumbers = 5000;  // 0 to 4999

    // Draws until a number is neither locked by another send nor still the mark of rows that a failed one has left.
    // Raises EngineError after as many draws as there are numbers.
    SendSessionID(db::Session& backOffice, const std::function<int()>& draw);
    ~SendSessionID();  // lets the lock go; a lost session has let it go
    SendSessionID(const SendSessionID&) = delete;
    SendSessionID& operator=(const SendSessionID&) = delete;

    [[nodiscard]] const QString& text() const { return text_; }

private:
    [[nodiscard]] bool take(const QString& number);

    db::Session& backOffice_;
    QString text_;
};

}  // namespace torvik
