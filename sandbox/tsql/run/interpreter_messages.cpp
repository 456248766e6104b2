// Variables, messages and waiting: DECLARE, SET, PRINT, RAISERROR, THROW, WAITFOR.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <thread>

#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/interpreter_raiserror.h"

namespace sandbox {

namespace {

constexpr Type kInt{.id = TypeId::Int};

std::int64_t wholeOf(const Typed& value) {
    const auto* n = std::get_if<std::int64_t>(&value.value);
    return n ? *n : 0;
}

std::string firstCharacters(std::string text, std::size_t most) {
    std::size_t at = 0;
    for (std::size_t n = 0; at < text.size(); ++at) {
        if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80 && n++ == most) break;
    }
    text.resize(at);
    return text;
}

}  // namespace

void Interpreter::setVariable(int slot, Value value) {
    frame().variables.at(static_cast<std::size_t>(slot)) = std::move(value);
}

void Interpreter::runDeclare(const ast::Declare& n) {
    for (const auto& item : n.items) {
        if (!item.value) continue;
        const auto slot = frame().unit->findVariable(item.name, frame().unit->variables.size());
        setVariable(*slot, evaluate(*item.value, item.type.type).value);
        succeed(1);
    }
}

void Interpreter::runSetVariable(const ast::SetVariable& n) {
    const Unit& unit = *frame().unit;
    const auto slot = unit.findVariable(n.variable, unit.variables.size());
    const Unit::Variable& variable = unit.variables.at(static_cast<std::size_t>(*slot));
    if (variable.cursor) throw SqlError(errorMessage<40510>("SET cursor variable"));
    setVariable(*slot, evaluate(*n.value, variable.type).value);
    succeed(1);
}

void Interpreter::runPrint(const ast::Print& n) {
    const Typed value = evaluate(*n.value);
    std::string text = isNull(value.value)
                           ? std::string()
                           : displayText(value.value, value.type, session_.connection->functions().convert);
    constexpr std::size_t kMost = 8000;
    text = firstCharacters(std::move(text), isUnicode(value.type.id) ? kMost / 2 : kMost);
    Message printed;
    printed.severity = 0;
    printed.text = text.empty() ? " " : text;
    inform(std::move(printed));
    succeed(0);
}

void Interpreter::runRaiseError(const ast::RaiseError& n) {
    std::vector<Typed> arguments;
    for (const auto& argument : n.arguments) arguments.push_back(evaluate(*argument));
    const Typed what = evaluate(*n.message);
    Message message{.number = 50000, .severity = 16, .state = 1};
    if (n.severity) message.severity = static_cast<int>(wholeOf(evaluate(*n.severity, kInt)));
    if (n.state) message.state = static_cast<int>(wholeOf(evaluate(*n.state, kInt)));
    message.state = message.state < 0 ? 1 : std::min(message.state, 255);

    if (n.oldForm) {
        message.number = static_cast<int>(wholeOf(what));
        message.text = arguments.empty() ? "" : displayText(arguments[0].value, arguments[0].type);
    } else if (isInteger(what.type.id)) {
        const std::int64_t number = wholeOf(what);
        constexpr std::int64_t kFirstOfUsers = 13000;
        if (number < kFirstOfUsers || number == 50000) {
            throw SqlError(errorMessage<2732>(number));
        }
        throw SqlError(errorMessage<18054>(number, message.severity, message.state));
    } else {
        const std::string format = isNull(what.value) ? "" : displayText(what.value, what.type);
        message.text = formatRaiserror(format, arguments);
    }

    if (message.severity > 18 && !n.log) {
        throw SqlError(errorMessage<2754>());
    }
    if (message.severity > 10) {
        const Effect effect = message.severity >= 20 ? Effect::Connection : Effect::Statement;
        throw SqlError(std::move(message), effect);
    }
    if (message.severity == 10 || message.severity < 0) message.severity = 0;
    const int number = message.number;
    inform(std::move(message));
    succeed(0);
    if (n.setError) session_.error = number;
}

void Interpreter::runThrow(const ast::Throw& n) {
    if (!n.number) {
        if (session_.caught.empty()) {
            throw SqlError(errorMessage<10704>());
        }
        throw SqlError(session_.caught.back().message);
    }
    const auto number = wholeOf(evaluate(*n.number, kInt));
    if (number < 50000) {
        throw SqlError(errorMessage<35100>(number));
    }
    const Typed text = evaluate(*n.message, Type{.id = TypeId::NVarChar, .length = 2048});
    throw SqlError(Message{.number = static_cast<int>(number),
                           .severity = 16,
                           .state = static_cast<int>(wholeOf(evaluate(*n.state, kInt))),
                           .text = isNull(text.value) ? "" : std::get<std::string>(text.value)});
}

namespace {

// "hh:mm[:ss[.mmm]]" in milliseconds.
std::optional<std::int64_t> clockTime(std::string_view text) {
    std::int64_t parts[3] = {0, 0, 0};
    std::size_t at = 0;
    const auto number = [&](std::int64_t& out) {
        const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), out);
        if (error != std::errc()) return false;
        at = static_cast<std::size_t>(end - text.data());
        return true;
    };
    int count = 0;
    for (; count < 3; ++count) {
        if (!number(parts[count])) return std::nullopt;
        if (at == text.size() || text[at] != ':') break;
        ++at;
    }
    std::int64_t milliseconds = 0;
    if (at < text.size() && text[at] == '.') {
        const std::size_t start = ++at;
        if (!number(milliseconds)) return std::nullopt;
        for (std::size_t digits = at - start; digits < 3; ++digits) milliseconds *= 10;
        for (std::size_t digits = at - start; digits > 3; --digits) milliseconds /= 10;
    }
    if (at != text.size() || count == 0 || parts[0] > 23 || parts[1] > 59 || parts[2] > 59) return std::nullopt;
    return ((parts[0] * 60 + parts[1]) * 60 + parts[2]) * 1000 + milliseconds;
}

std::int64_t timeOfDay() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    return ((local.tm_hour * 60LL + local.tm_min) * 60 + local.tm_sec) * 1000;
}

}  // namespace

void Interpreter::runWaitFor(const ast::WaitFor& n) {
    const Typed value = evaluate(*n.value);
    std::string text = isNull(value.value) ? "" : displayText(value.value, value.type);
    if (value.type.id == TypeId::DateTime) {
        text = displayText(convert(value.value, value.type, Type{.id = TypeId::VarChar, .length = 12}, {}, 114),
                           Type{.id = TypeId::VarChar, .length = 12});
        if (text.size() > 8) text[8] = '.';
    }
    const auto time = clockTime(text);
    if (!time) throw SqlError(errorMessage<148>(text), Effect::Batch);
    std::int64_t wait = *time;
    if (!n.isDelay) {
        constexpr std::int64_t kDay = 86'400'000;
        wait = (*time - timeOfDay() + kDay) % kDay;
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(wait);
    constexpr auto kSlice = std::chrono::milliseconds(5);
    for (auto now = std::chrono::steady_clock::now(); now < end; now = std::chrono::steady_clock::now()) {
        checkCancelled();
        std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kSlice, end - now));
    }
    succeed(0);
}

}  // namespace sandbox
