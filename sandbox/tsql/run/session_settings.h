// The options that SET changes, with SQL Server's defaults of an ODBC login. A procedure and a text get a copy: what
// they change ends with them.
#pragma once

#include <cstdint>
#include <string>

#include "sandbox/store/values/convert.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

struct Settings {
    // What a login begins with. A client that is not ODBC's gets the older answers about quotes, nulls and warnings.
    [[nodiscard]] static Settings ofLogin(bool odbc) {
        Settings settings;
        settings.quotedIdentifier = settings.ansiNulls = settings.ansiWarnings = odbc;
        return settings;
    }

    bool noCount = false;
    bool xactAbort = false;
    bool implicitTransactions = false;
    bool ansiNulls = true;
    bool ansiWarnings = true;
    bool ansiPadding = true;
    bool ansiNullDefault = true;
    bool concatNullYieldsNull = true;
    bool quotedIdentifier = true;
    bool arithAbort = true;
    bool cursorCloseOnCommit = false;
    bool formatOnly = false;    // FMTONLY
    bool noExecute = false;     // NOEXEC
    bool parseOnly = false;     // PARSEONLY
    int lockTimeout = -1;       // milliseconds; -1: for ever
    std::int64_t rowCount = 0;  // ROWCOUNT: 0 is no limit
    int textSize = 2147483647;
    int dateFirst = 7;
    DateOrder dateOrder = DateOrder::Mdy;
    std::string language = "us_english";
    ast::Isolation isolation = ast::Isolation::ReadCommitted;
};

}  // namespace sandbox
