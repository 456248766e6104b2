// Requests from a client.
#include "sandbox/tds/requests.h"

#include <array>
#include <cstdio>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tds/text.h"
#include "sandbox/tds/values.h"

namespace sandbox::tds {
namespace {

constexpr std::uint8_t kByReference = 0x01;
constexpr std::uint8_t kDefaultValue = 0x02;
constexpr std::uint8_t kEncrypted = 0x08;
constexpr std::uint16_t kNoMetadata = 0x02;
constexpr std::uint16_t kNumbered = 0xFFFF;
constexpr std::uint8_t kNoExecute = 0xFE;
constexpr std::size_t kLongestName = 128;
constexpr std::size_t kMostParameters = 2100;

// ALL_HEADERS: lengths that count themselves. What they hold (the transaction's descriptor, the number of open
// requests, a notification, an activity id) a server without MARS knows by itself.
void skipHeaders(Reader& in) {
    const std::size_t start = in.position();
    const std::uint32_t total = in.u32();
    if (total < 4 || total - 4 > in.left()) throw StreamError("the headers' length is wrong");
    while (in.position() - start < total) {
        const std::uint32_t length = in.u32();
        if (length < 6 || length - 4 > total - (in.position() - start)) {
            throw StreamError("a header's length is wrong");
        }
        in.skip(length - 4);
    }
}

CallParameter readParameter(Reader& in, std::size_t ordinal) {
    CallParameter p;
    p.name = in.shortText();
    const std::uint8_t status = in.u8();
    p.output = (status & kByReference) != 0;
    p.useDefault = (status & kDefaultValue) != 0;
    if ((status & kEncrypted) != 0) throw StreamError("an encrypted parameter");
    try {
        const WireType type = readTypeInfo(in);
        p.value.type = type.type;
        p.value.value = readValue(in, type, Place::Parameter);
    } catch (const UnsupportedType& e) {
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "0x%02X", e.code);
        throw RefusedParameter(errorMessage<8009>(ordinal, p.name, code.data()));
    } catch (const InvalidValue& e) {
        throw RefusedParameter(errorMessage<8023>(ordinal, p.name, typeName(p.value.type)));
    }
    return p;
}

// The byte that parts two calls of a message: it stands where a parameter's name length would.
bool isSeparator(std::uint8_t byte, Version version) {
    return byte == (version >= Version::V72 ? 0xFF : 0x80) || byte == kNoExecute;
}

Call readCall(Reader& in, Version version) {
    Call call;
    const std::uint16_t length = in.u16();
    if (length == kNumbered) {
        const std::uint16_t id = in.u16();
        if (id < static_cast<std::uint16_t>(ProcId::Cursor) || id > static_cast<std::uint16_t>(ProcId::Unprepare)) {
            throw StreamError("a call of a procedure number that is not known");
        }
        call.id = static_cast<ProcId>(id);
    } else {
        // A name of four parts, each quoted.
        if (length == 0 || length > 4 * (2 * kLongestName + 3)) throw StreamError("a procedure's name is too long");
        call.procedure = in.text(length);
    }
    call.noMetadata = (in.u16() & kNoMetadata) != 0;
    while (!in.atEnd() && !isSeparator(in.peek(), version)) {
        if (call.parameters.size() == kMostParameters) {
            throw RefusedParameter(errorMessage<8003>());
        }
        call.parameters.push_back(readParameter(in, call.parameters.size() + 1));
    }
    return call;
}

// Names of transactions count their bytes, unlike all other names.
std::string transactionName(Reader& in) {
    const std::uint8_t bytes = in.u8();
    if (bytes % 2 != 0) throw StreamError("a transaction's name ends within a character");
    return in.text(bytes / 2);
}

std::uint8_t isolation(Reader& in) {
    const std::uint8_t level = in.u8();
    if (level > 5) throw StreamError("an unknown isolation level");
    return level;
}

}  // namespace

std::string readBatch(ByteSpan message, Version version) {
    Reader in(message);
    if (version >= Version::V72) skipHeaders(in);
    if (in.left() % 2 != 0) throw StreamError("a batch ends within a character");
    return in.text(in.left() / 2);
}

std::vector<Call> readCalls(ByteSpan message, Version version) {
    Reader in(message);
    if (version >= Version::V72) skipHeaders(in);
    std::vector<Call> calls;
    while (true) {
        calls.push_back(readCall(in, version));
        if (in.atEnd()) return calls;
        if (in.u8() == kNoExecute) throw StreamError("a call that is not to be executed");
        if (in.atEnd()) return calls;
    }
}

TransactionRequest readTransaction(ByteSpan message) {
    Reader in(message);
    skipHeaders(in);
    TransactionRequest request;
    const std::uint16_t step = in.u16();
    request.step = static_cast<TransactionStep>(step);
    switch (request.step) {
        case TransactionStep::Begin:
            request.isolation = isolation(in);
            request.name = transactionName(in);
            break;
        case TransactionStep::Commit:
        case TransactionStep::Rollback:
            request.name = transactionName(in);
            request.beginAnother = (in.u8() & 1) != 0;
            if (request.beginAnother) request.isolation = isolation(in);
            break;
        case TransactionStep::Save: request.name = transactionName(in); break;
        case TransactionStep::GetDtcAddress:
        case TransactionStep::Propagate:
        case TransactionStep::Promote: break;
        default: throw StreamError("an unknown transaction request");
    }
    return request;
}

std::string textOf(const TransactionRequest& request) {
    const auto named = [&](const char* verb) {
        return std::string(verb) + " TRANSACTION" + (request.name.empty() ? "" : " " + request.name);
    };
    switch (request.step) {
        case TransactionStep::Begin: return named("BEGIN");
        case TransactionStep::Commit: return named("COMMIT");
        case TransactionStep::Rollback: return named("ROLLBACK");
        case TransactionStep::Save: return named("SAVE");
        default: return "BEGIN DISTRIBUTED TRANSACTION";
    }
}

}  // namespace sandbox::tds
