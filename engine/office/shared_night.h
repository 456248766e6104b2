// A night of fetching that copies of the program share, as rows of the back office's dts_logg tell it: that a night
// stands, that a copy helps with it, and which copy's visit at which till has ended, and how. They say who goes where
// and no more: what keeps two copies from one till is its application lock. Times are the back office's. See
// docs/engine.md.
#pragma once

#include <QString>
#include <QStringList>
#include <QUuid>
#include <optional>
#include <set>
#include <utility>

namespace torvik {

class BackOffice;

struct SharedNight {
    QUuid id;
    QString machine;  // of the copy that leads it
    // The till whose key the night's own rows bear: a back office may hold the rows of dts_logg to its tills.
    int Ik_Ku_Id = 0;
    QString KasseNr;
};

// How a copy's visit at a till has ended.
struct VisitEnd {
    enum class Kind {
        Fetched,
        FetchedWithErrors,  // to the end, with lines of error in that copy's log
        Failed
    };
    Kind kind = Kind::Failed;
    QString machine;  // whose that copy is
};

// What the rows tell about a till.
struct TillMarks {
    bool NightStands = false;
    bool PairStands = false;      // a fetch of the till has been broken off, and nobody has resolved it yet
    std::optional<VisitEnd> End;  // of tonight; none: no visit has ended
};

// The rows of nights. Every operation is one statement, waits for nobody's visit, and raises what the session raises.
class SharedNights {
public:
    explicit SharedNights(BackOffice& office) : office_(office) {}

    // Removes what earlier nights have left and begins one, led by this machine, under the key of a till.
    [[nodiscard]] SharedNight Begin(int Ik_Ku_Id, const QString& KasseNr);
    void End(const SharedNight& night);
    // The night that began last and has not been ended. One whose leading copy has died counts for twelve hours.
    [[nodiscard]] std::optional<SharedNight> Standing();

    void Join(const SharedNight& night);
    [[nodiscard]] bool HasHelpers(const SharedNight& night);

    void EndVisit(const SharedNight& night, int Ik_Ku_Id, const QString& KasseNr, VisitEnd::Kind kind);
    // The tills, by Ik_Ku_Id and KasseNr, that a visit of tonight has fetched.
    [[nodiscard]] std::set<std::pair<int, QString>> Fetched(const SharedNight& night);
    // A question for the rows about a till, to be asked along with its lock, and what its answer says.
    [[nodiscard]] static QString QuestionOf(const SharedNight& night, int Ik_Ku_Id, const QString& KasseNr);
    [[nodiscard]] static TillMarks MarksIn(const SharedNight& night, const QStringList& answer);

private:
    void write(int Ik_Ku_Id, const QString& KasseNr, const QString& info);
    void run(const char* sql, const QString& info = {});

    BackOffice& office_;
};

}  // namespace torvik
