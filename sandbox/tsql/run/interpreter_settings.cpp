// SET and USE. Options that change nothing here are accepted when the state that they ask for is the one that holds;
// every other one is refused by name.
#include <algorithm>
#include <array>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

namespace {

[[noreturn]] void raiseUnsupported(const std::string& what) {
    throw SqlError(errorMessage<40510>("SET " + what));
}

struct OnOff {
    std::string_view name;
    bool Settings::*field;
};

constexpr auto kOnOff = std::to_array<OnOff>({
    {"ANSI_NULLS", &Settings::ansiNulls},
    {"ANSI_NULL_DFLT_ON", &Settings::ansiNullDefault},
    {"ANSI_PADDING", &Settings::ansiPadding},
    {"ANSI_WARNINGS", &Settings::ansiWarnings},
    {"ARITHABORT", &Settings::arithAbort},
    {"CONCAT_NULL_YIELDS_NULL", &Settings::concatNullYieldsNull},
    {"CURSOR_CLOSE_ON_COMMIT", &Settings::cursorCloseOnCommit},
    {"FMTONLY", &Settings::formatOnly},
    {"IMPLICIT_TRANSACTIONS", &Settings::implicitTransactions},
    {"NOCOUNT", &Settings::noCount},
    {"QUOTED_IDENTIFIER", &Settings::quotedIdentifier},
    {"XACT_ABORT", &Settings::xactAbort},
});

// These may only be given the state that this server always has.
struct Fixed {
    std::string_view name;
    bool on;
};
constexpr auto kFixed = std::to_array<Fixed>({
    {"ANSI_NULL_DFLT_OFF", false},
    {"ARITHIGNORE", false},
    {"FORCEPLAN", false},
    {"NOEXEC", false},
    {"NUMERIC_ROUNDABORT", false},
    {"PARSEONLY", false},
    {"REMOTE_PROC_TRANSACTIONS", false},
    {"SHOWPLAN_ALL", false},
    {"SHOWPLAN_TEXT", false},
    {"SHOWPLAN_XML", false},
    {"STATISTICS IO", false},
    {"STATISTICS PROFILE", false},
    {"STATISTICS TIME", false},
    {"STATISTICS XML", false},
});

struct Language {
    std::string_view name;
    std::string_view alias;
    DateOrder dates;
    int firstDay;
};
constexpr auto kLanguages = std::to_array<Language>({
    {"us_english", "English", DateOrder::Mdy, 7},
    {"Norsk", "Norwegian", DateOrder::Dmy, 1},
});

struct DateFormat {
    std::string_view name;
    DateOrder order;
};
constexpr auto kDateFormats = std::to_array<DateFormat>({
    {"mdy", DateOrder::Mdy},
    {"dmy", DateOrder::Dmy},
    {"ymd", DateOrder::Ymd},
    {"ydm", DateOrder::Ydm},
    {"myd", DateOrder::Myd},
    {"dym", DateOrder::Dym},
});

}  // namespace

void Interpreter::setOnOff(const std::string& name, bool on) {
    if (name == "ANSI_DEFAULTS") {
        for (const char* one : {"ANSI_NULLS", "ANSI_NULL_DFLT_ON", "ANSI_PADDING", "ANSI_WARNINGS",
                                "CURSOR_CLOSE_ON_COMMIT", "IMPLICIT_TRANSACTIONS", "QUOTED_IDENTIFIER"}) {
            setOnOff(one, on);
        }
        return;
    }
    for (const OnOff& row : kOnOff) {
        if (row.name != name) continue;
        session_.settings.*row.field = on;
        return;
    }
    for (const Fixed& row : kFixed) {
        if (row.name != name) continue;
        if (row.on != on) raiseUnsupported(name + (on ? " ON" : " OFF"));
        return;
    }
    throw SqlError(errorMessage<195, 5>(name, "SET option"));
}

void Interpreter::setValue(const std::string& name, const Typed& value) {
    Settings& settings = session_.settings;
    const auto number = [&] {
        return std::get<std::int64_t>(convert(value.value, value.type, Type{.id = TypeId::BigInt}));
    };
    const std::string text = isNull(value.value) ? "" : displayText(value.value, value.type);
    if (isNull(value.value)) throw SqlError(errorMessage<195, 5>(name, "SET option"));
    if (name == "LOCK_TIMEOUT") {
        settings.lockTimeout = static_cast<int>(std::max<std::int64_t>(number(), -1));
    } else if (name == "ROWCOUNT") {
        settings.rowCount = number();
    } else if (name == "TEXTSIZE") {
        const std::int64_t size = number();
        constexpr int kLongest = 2147483647;
        constexpr int kShortest = 4096;
        settings.textSize = size < 0 ? kLongest : size == 0 ? kShortest : static_cast<int>(size);
    } else if (name == "DATEFIRST") {
        const std::int64_t day = number();
        if (day < 1 || day > 7) throw SqlError(errorMessage<2742>(day));
        settings.dateFirst = static_cast<int>(day);
    } else if (name == "DATEFORMAT") {
        const auto* row = std::find_if(kDateFormats.begin(), kDateFormats.end(),
                                       [&](const DateFormat& f) { return sameName(f.name, text); });
        if (row == kDateFormats.end()) {
            throw SqlError(errorMessage<2741>(text));
        }
        settings.dateOrder = row->order;
    } else if (name == "LANGUAGE") {
        const auto* row = std::find_if(kLanguages.begin(), kLanguages.end(), [&](const Language& l) {
            return sameName(l.name, text) || sameName(l.alias, text);
        });
        if (row == kLanguages.end()) {
            throw SqlError(errorMessage<2740>(text));
        }
        settings.language = row->name;
        settings.dateOrder = row->dates;
        settings.dateFirst = row->firstDay;
        inform(errorMessage<5703>(settings.language));
    } else if (name == "DEADLOCK_PRIORITY" || name == "QUERY_GOVERNOR_COST_LIMIT" || name == "CONTEXT_INFO") {
        raiseUnsupported(name);
    } else {
        throw SqlError(errorMessage<195, 5>(name, "SET option"));
    }
}

void Interpreter::runSetOption(const ast::SetOption& n) {
    for (const std::string& name : n.names) {
        if (n.on)
            setOnOff(name, *n.on);
        else if (n.value)
            setValue(name, evaluate(*n.value));
        else
            throw SqlError(errorMessage<195, 5>(name, "SET option"));
    }
    session_.applySettings();
    succeed(0);
    done(std::nullopt);
}

void Interpreter::runSetIsolation(const ast::SetIsolation& n) {
    session_.settings.isolation = n.level;
    session_.tellProcess();
    succeed(0);
    done(std::nullopt);
}

void Interpreter::runSetIdentityInsert(const ast::SetIdentityInsert& n) {
    const auto found = bindContext(*frame().unit, 0).find(n.table.database, n.table.schema, n.table.name);
    if (!found) {
        throw SqlError(errorMessage<1088, 11>(n.table.written()));
    }
    const auto& columns = found->object->columns;
    if (std::none_of(columns.begin(), columns.end(), [](const ColumnDef& c) { return c.identity; })) {
        throw SqlError(errorMessage<8106>(n.table.written()));
    }
    const std::string key = identityInsertKey(*found);
    if (n.on && !session_.identityInsert.empty() && session_.identityInsert != key) {
        throw SqlError(errorMessage<8107>(session_.identityInsert, n.table.written()));
    }
    if (n.on)
        session_.identityInsert = key;
    else if (session_.identityInsert == key)
        session_.identityInsert.clear();
    succeed(0);
    done(std::nullopt);
}

void Interpreter::runUse(const ast::Use& n) {
    const std::string before = session_.database();
    session_.useDatabase(n.database);
    const std::string& now = session_.database();
    reply_->databaseChanged(before, now);
    inform(errorMessage<5701, 1>(now));
    succeed(0);
    done(std::nullopt);
}

}  // namespace sandbox
