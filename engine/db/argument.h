// A value on its way to the server as a parameter, and the type it is sent as. Used by Query, Table and StoredProc.
#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "engine/db/field.h"

namespace torvik::db {

struct Argument {
    Value Content;
    // The column that takes it; unless given, the value's own type (and nvarchar for null).
    std::optional<FieldInfo> Target;
};

// One statement to send: a batch with "?" for each argument.
struct Request {
    QString Text;
    std::vector<Argument> Arguments;
    int Timeout = 0;           // seconds; 0: none
    bool Cancellable = false;  // by the thread's StatementCancel
};

}  // namespace torvik::db
