// A line of its own before each till of a chain, and the back office told of them, so that the program meets the tills
// behind their lines.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "engine/db/query.h"
#include "tests/support/line_relay.h"

namespace torvik::bench {

// In the order of a walk; `there` is the delay one way. The lines last as long as what is returned.
inline std::vector<std::unique_ptr<test::LineRelay>> linesTo(const std::string& dataLink,
                                                             std::chrono::milliseconds there) {
    db::Session office;
    office.SetConnectString(QString::fromStdString(dataLink));
    office.Open();
    db::Query tills(&office);
    tills.SQL = {
        QStringLiteral("SELECT Ikk_Ik_Ku_Id, Ikk_Kassenummer, Ikk_Server FROM Internkundekasse, Internkunde "
                       "WHERE Ikk_Ik_Ku_Id = Ik_Ku_Id ORDER BY Ik_Avdelingsnummer, Ikk_Kassenummer")};
    tills.Open();
    std::vector<std::unique_ptr<test::LineRelay>> lines;
    for (; !tills.Eof(); tills.Next()) {
        const auto port = tills.text("Ikk_Server").section(u',', 1).toUShort();
        lines.push_back(std::make_unique<test::LineRelay>(port, test::LineRelay::Terms{.delay = there}));
        db::Query told(&office);
        told.SQL = {QStringLiteral("UPDATE Internkundekasse SET Ikk_Server = '127.0.0.1,%1' "
                                   "WHERE Ikk_Ik_Ku_Id = %2 AND Ikk_Kassenummer = '%3'")
                        .arg(QString::number(lines.back()->port()), QString::number(tills.integer("Ikk_Ik_Ku_Id")),
                             tills.text("Ikk_Kassenummer"))};
        told.ExecSQL();
    }
    return lines;
}

}  // namespace torvik::bench
