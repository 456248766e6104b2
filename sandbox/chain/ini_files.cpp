#include "sandbox/chain/ini_files.h"

#include <iterator>
#include <string>

#include "sandbox/chain/demo_chain.h"
#include "sandbox/chain/till_versions.h"

namespace sandbox::chain {

namespace {

struct Equipment {
    const char* labelPrinter;
    bool handheld;
    int cardTerminal;  // as TorvikPOS.ini counts them
    bool cardTerminalActive;
};

// Dealt out to the tills in turn.
constexpr Equipment kEquipment[] = {
    {"Zebra GK420d", true, 8, true}, {"", false, 6, true}, {"TSC TDP-225", false, 9, true}, {"", true, 0, false},
    {"", false, 8, false},
};

std::string fileOf(const Equipment& equipment) {
    return std::string("[General]\r\nBankTerminalIsActive=") + (equipment.cardTerminalActive ? "1" : "0") +
           "\r\n\r\n[Bankterminal]\r\nTerminalType=" + std::to_string(equipment.cardTerminal) +
           "\r\n\r\n[CEDevice]\r\nEnabled=" + (equipment.handheld ? "1" : "0") +
           "\r\n\r\n[Labels]\r\nPrinterName=" + equipment.labelPrinter + "\r\n";
}

}  // namespace

void giveIniFiles(DemoChain& chain) {
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i) {
        if (!tillHasColumn(chain.model().tills[i].version, "BINARYOBJECT", "BO_TYPE")) continue;
        chain.runInTill(i, R"(IF EXISTS (SELECT * FROM BINARYOBJECT WHERE BO_TYPE = 'TORVIKPOS.INI') RETURN
INSERT INTO BINARYOBJECT (BO_ID, BO_OBJECT, BO_TYPE, BO_DATETIME, BO_DIRECTION, BO_STATUS)
SELECT COALESCE(MAX(BO_ID), 0) + 1, CAST(')" +
                               fileOf(kEquipment[i % std::size(kEquipment)]) +
                               R"(' AS varbinary(max)), 'TORVIKPOS.INI', GETDATE(), 1, 0
FROM BINARYOBJECT)");
    }
}

}  // namespace sandbox::chain
