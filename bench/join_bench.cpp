// What the stand-in server needs for the big steps of an item export: a join of 100,000 items with 100,000 export rows
// on their item numbers, and an UPDATE ... FROM over the same, with an index on the key and without one.
#include <stdexcept>
#include <string>

#include "bench/figure.h"
#include "sandbox/tsql/run/engine.h"
#include "sandbox/tsql/run/session.h"

namespace {

constexpr int kRows = 100'000;
constexpr double kMost = 2;

// Keeps the last row, and stops at the first error.
class LastRow : public sandbox::SilentReply {
public:
    void row(std::span<const sandbox::Value> cells) override { last.assign(cells.begin(), cells.end()); }
    void error(const sandbox::Message& message) override { throw std::runtime_error(message.text); }

    std::vector<sandbox::Value> last;
};

class Shop {
public:
    Shop() {
        run("CREATE DATABASE shop");
        run("USE shop");
        run("CREATE TABLE Vare (Va_Id char(15) NOT NULL, Va_Navn varchar(50) NULL, Va_Pris money NULL)");
        run("CREATE TABLE VareEksport (Ve_SesjonId varchar(10) NOT NULL, Ve_Va_Id char(15) NOT NULL, Ve_Pris money "
            "NULL)");
        const std::string numbers =
            "DECLARE @n int SET @n = 1 WHILE @n < " + std::to_string(kRows) +
            " BEGIN INSERT VareEksport SELECT '7', CAST(Ve_Va_Id AS int) + @n, Ve_Pris + @n FROM VareEksport "
            "WHERE CAST(Ve_Va_Id AS int) + @n <= " +
            std::to_string(kRows) + " SET @n = @n * 2 END";
        run("INSERT VareEksport VALUES ('7', '1', 1)");
        run(numbers);
        run("INSERT Vare SELECT Ve_Va_Id, 'item ' + Ve_Va_Id, 0 FROM VareEksport ORDER BY Ve_Pris DESC");
    }

    void run(const std::string& batch) { session_.batch(batch, reply_); }

    // The one number that a batch gives.
    std::int64_t number(const std::string& batch) {
        run(batch);
        return std::get<std::int64_t>(reply_.last.at(0));
    }

    void measure(const std::string& how) {
        using torvik::bench::seconds;
        using torvik::bench::tell;
        std::int64_t joined = 0;
        const double join = seconds([&] {
            joined = number(
                "SELECT COUNT(Va_Navn) FROM VareEksport (NOLOCK), Vare (NOLOCK) WHERE Ve_SesjonId = '7' AND "
                "Ve_Va_Id = Va_Id");
        });
        const double update = seconds(
            [&] { run("UPDATE Vare SET Va_Pris = Ve_Pris FROM VareEksport WHERE Va_Id = Ve_Va_Id AND Ve_Pris > 0"); });
        const std::int64_t priced = number("SELECT COUNT(*) FROM Vare WHERE Va_Pris = CAST(Va_Id AS int)");
        if (joined != kRows || priced != kRows) throw std::runtime_error("wrong rows");
        tell("join of 100,000 items with 100,000 export rows, " + how, join, "s", "2 s at most", kMost);
        tell("UPDATE FROM over 100,000 items and 100,000 export rows, " + how, update, "s", "2 s at most", kMost);
    }

private:
    sandbox::Engine engine_{{}};
    sandbox::Session session_{engine_, {.user = "sa", .database = {}, .host = {}, .program = {}, .language = {}}};
    LastRow reply_;
};

}  // namespace

int main() {
    Shop shop;
    shop.measure("no index");
    shop.run("UPDATE Vare SET Va_Pris = 0");
    shop.run("CREATE INDEX VE_VA_ID ON VareEksport (Ve_Va_Id)");
    shop.run("ALTER TABLE Vare ADD CONSTRAINT PK_VARE PRIMARY KEY (Va_Id)");
    shop.measure("keys indexed");
}
