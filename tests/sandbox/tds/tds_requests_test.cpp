// Batches, calls, transaction requests and bulk rows as clients send them, and as nobody should.
#include <gtest/gtest.h>

#include <random>

#include "sandbox/tds/bulk.h"
#include "sandbox/tds/login.h"
#include "sandbox/tds/packet.h"
#include "sandbox/tds/prelogin.h"
#include "sandbox/tds/requests.h"
#include "sandbox/tds/values.h"
#include "tests/support/tds_client.h"

namespace sandbox::tds {
namespace {

using Buffer = std::vector<std::uint8_t>;

Type type(TypeId id, int length = 0) {
    Type t;
    t.id = id;
    t.length = length;
    return t;
}

TEST(TdsBatch, TextComesAfterTheHeaders) {
    Writer with, without;
    appendHeaders(with, 77);
    with.text("SELECT 'Å'");
    without.text("SELECT 'Å'");
    EXPECT_EQ(readBatch(with.view(), Version::V74), "SELECT 'Å'");
    EXPECT_EQ(readBatch(without.view(), Version::V71), "SELECT 'Å'");
}

TEST(TdsBatch, WrongHeadersAndHalfCharactersAreRefused) {
    const Buffer cases[] = {
        {},
        {3, 0, 0, 0},
        {200, 0, 0, 0, 1, 0},
        {10, 0, 0, 0, 200, 0, 0, 0, 2, 0},
        {10, 0, 0, 0, 2, 0, 0, 0, 2, 0},
        {4, 0, 0, 0, 'x'},
    };
    for (const Buffer& c : cases) EXPECT_THROW((void)readBatch(c, Version::V74), StreamError) << c.size();
}

TEST(TdsCall, GivesNameFlagsTypesAndValues) {
    const Buffer message = callMessage(10, {{"", type(TypeId::NVarChar, 4000), std::string("SELECT @a"), false},
                                            {"@a", type(TypeId::Int), std::int64_t{5}, true},
                                            {"@b", type(TypeId::VarChar, Type::kMax), Null{}, false}});
    const std::vector<Call> calls = readCalls(message, Version::V74);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].id, ProcId::ExecuteSql);
    ASSERT_EQ(calls[0].parameters.size(), 3U);
    EXPECT_EQ(calls[0].parameters[0].value.value, Value(std::string("SELECT @a")));
    EXPECT_EQ(calls[0].parameters[1].name, "@a");
    EXPECT_TRUE(calls[0].parameters[1].output);
    EXPECT_EQ(calls[0].parameters[2].value.type.length, Type::kMax);
    EXPECT_TRUE(isNull(calls[0].parameters[2].value.value));
}

TEST(TdsCall, SeveralComeInOneMessage) {
    for (const Version version : {Version::V71, Version::V74}) {
        Buffer message = callMessage(15, {{"", type(TypeId::Int), std::int64_t{1}, false}}, version);
        message.push_back(version == Version::V71 ? 0x80 : 0xFF);
        Writer named;
        named.longText("dbo.p");
        named.u16(2);
        message.insert(message.end(), named.view().begin(), named.view().end());
        const std::vector<Call> calls = readCalls(message, version);
        ASSERT_EQ(calls.size(), 2U);
        EXPECT_EQ(calls[0].id, ProcId::Unprepare);
        EXPECT_EQ(calls[1].procedure, "dbo.p");
        EXPECT_TRUE(calls[1].noMetadata);
        EXPECT_TRUE(calls[1].parameters.empty());
    }
}

TEST(TdsCall, DefaultParameterIsToldApart) {
    Writer message;
    appendHeaders(message);
    message.longText("p");
    message.u16(0);
    message.shortText("@a");
    message.u8(2);
    message.bytes(Buffer{wire::kIntN, 4, 0});
    const std::vector<Call> calls = readCalls(message.view(), Version::V74);
    EXPECT_TRUE(calls[0].parameters[0].useDefault);
    EXPECT_FALSE(calls[0].parameters[0].output);
}

TEST(TdsCall, ParametersOfUnsupportedTypesAreRefusedByNumber) {
    Writer message;
    appendHeaders(message);
    message.longText("p");
    message.u16(0);
    message.shortText("@x");
    message.u8(0);
    message.bytes(Buffer{wire::kXml, 0});
    try {
        (void)readCalls(message.view(), Version::V74);
        FAIL() << "taken";
    } catch (const RefusedParameter& e) {
        EXPECT_EQ(e.message.number, 8009);
        EXPECT_NE(e.message.text.find("Parameter 1 (\"@x\"): Data type 0xF1 is unknown."), std::string::npos);
    }
}

TEST(TdsCall, ImpossibleValuesAreRefusedByNumber) {
    Writer message;
    appendHeaders(message);
    message.longText("p");
    message.u16(0);
    message.shortText("@d");
    message.u8(0);
    message.bytes(Buffer{wire::kDateTimeN, 8, 8, 0xFF, 0xFF, 0xFF, 0x7F, 0, 0, 0, 0});
    try {
        (void)readCalls(message.view(), Version::V74);
        FAIL() << "taken";
    } catch (const RefusedParameter& e) {
        EXPECT_EQ(e.message.number, 8023);
        EXPECT_NE(e.message.text.find("data type datetime"), std::string::npos);
    }
}

TEST(TdsTransaction, StepsAreRead) {
    const auto message = [](const Buffer& body) {
        Writer out;
        appendHeaders(out);
        out.bytes(body);
        return out.buffer();
    };
    TransactionRequest r = readTransaction(message({5, 0, 2, 4, 'a', 0, 'b', 0}));
    EXPECT_EQ(r.step, TransactionStep::Begin);
    EXPECT_EQ(r.isolation, 2);
    EXPECT_EQ(r.name, "ab");
    r = readTransaction(message({7, 0, 0, 1, 4, 0}));
    EXPECT_EQ(r.step, TransactionStep::Commit);
    EXPECT_TRUE(r.beginAnother);
    EXPECT_EQ(r.isolation, 4);
    r = readTransaction(message({8, 0, 0, 0}));
    EXPECT_EQ(r.step, TransactionStep::Rollback);
    EXPECT_FALSE(r.beginAnother);
    EXPECT_EQ(readTransaction(message({9, 0, 2, 's', 0})).name, "s");
    EXPECT_THROW((void)readTransaction(message({99, 0})), StreamError);
    EXPECT_THROW((void)readTransaction(message({5, 0, 9, 0})), StreamError);
    EXPECT_THROW((void)readTransaction(message({9, 0, 3, 's', 0, 0})), StreamError);
}

// COLMETADATA of an int and a text column, three rows, DONE.
Buffer bulkMessage(std::size_t textLength) {
    Writer out;
    out.u8(0x81);
    out.u16(2);
    for (const TypeId id : {TypeId::Int, TypeId::Text}) {
        out.u32(0);
        out.u16(1);
        writeTypeInfo(out, wireType(type(id), true, Version::V74));
        if (id == TypeId::Text) out.longText("db.dbo.t");  // the table's name, in one piece
        out.shortText(id == TypeId::Int ? "i" : "t");
    }
    for (std::int64_t i = 0; i < 3; ++i) {
        out.u8(0xD1);
        writeValue(out, wireType(type(TypeId::Int), true, Version::V74), i, Place::Row);
        writeValue(out, wireType(type(TypeId::Text), true, Version::V74), std::string(textLength, 'x'), Place::Row);
    }
    out.u8(0xFD);
    out.fill(0, 12);
    return out.buffer();
}

TEST(TdsBulk, RowsAreFoundWhateverPiecesTheyComeIn) {
    for (const std::size_t textLength : {std::size_t{3}, std::size_t{10000}}) {
        const Buffer message = bulkMessage(textLength);
        for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{4088}, message.size()}) {
            if (piece == 1 && textLength > 3) continue;
            BulkReader reader(Version::V74, 1U << 20);
            std::vector<std::int64_t> found;
            BulkReader::State state = BulkReader::State::NeedsMore;
            for (std::size_t at = 0; at < message.size(); at += piece) {
                reader.feed(ByteSpan(message).subspan(at, std::min(piece, message.size() - at)));
                if (at + piece >= message.size()) reader.endOfMessage();
                while ((state = reader.next()) != BulkReader::State::NeedsMore && state != BulkReader::State::End) {
                    if (state != BulkReader::State::Row) continue;
                    found.push_back(std::get<std::int64_t>(reader.cells()[0]));
                    EXPECT_EQ(std::get<std::string>(reader.cells()[1]).size(), textLength);
                }
            }
            EXPECT_EQ(state, BulkReader::State::End);
            EXPECT_EQ(found, (std::vector<std::int64_t>{0, 1, 2}));
        }
    }
}

TEST(TdsBulk, EndsWithItsDoneHoweverMuchOfItComes) {
    const Buffer message = bulkMessage(3);
    for (const std::size_t missing : {std::size_t{0}, std::size_t{4}, std::size_t{12}}) {
        BulkReader reader(Version::V74, 1U << 20);
        reader.feed(ByteSpan(message).first(message.size() - missing));
        reader.endOfMessage();
        std::vector<BulkReader::State> states;
        for (int i = 0; i < 5; ++i) states.push_back(reader.next());
        using enum BulkReader::State;
        EXPECT_EQ(states, (std::vector{Columns, Row, Row, Row, End})) << missing;
    }
}

TEST(TdsBulk, MessageThatEndsWithinARowIsTruncated) {
    const Buffer message = bulkMessage(3);
    BulkReader reader(Version::V74, 1U << 20);
    reader.feed(ByteSpan(message).first(message.size() - 20));
    reader.endOfMessage();
    EXPECT_THROW(
        {
            while (reader.next() != BulkReader::State::End) continue;
        },
        Truncated);
}

TEST(TdsBulk, RowBeyondTheLimitIsRefused) {
    const Buffer message = bulkMessage(5000);
    BulkReader reader(Version::V74, 1000);
    reader.feed(ByteSpan(message).first(3000));
    EXPECT_EQ(reader.next(), BulkReader::State::Columns);
    EXPECT_THROW((void)reader.next(), StreamError);
}

TEST(TdsBulk, RowsWithoutDescriptionAreRefused) {
    BulkReader reader(Version::V74, 1000);
    reader.feed(Buffer{0xD1, 0, 0});
    EXPECT_THROW((void)reader.next(), StreamError);
}

// Whatever comes, a decoder gives a result or one of its own exceptions.
template <typename Decode>
void expectNoSurprise(const Buffer& bytes, Decode decode) {
    try {
        decode(bytes);
    } catch (const StreamError&) {
    } catch (const UnsupportedType&) {
    } catch (const InvalidValue&) {
    } catch (const RefusedParameter&) {
    }
}

TEST(TdsDecoders, TakeAnyBytesWithoutSurprise) {
    std::mt19937 random(4711);
    const Buffer seeds[] = {
        callMessage(13, {{"@h", type(TypeId::Int), Null{}, true},
                         {"", type(TypeId::NText), std::string("@a int"), false},
                         {"", type(TypeId::NVarChar, Type::kMax), std::string("SELECT @a"), false},
                         {"", type(TypeId::UniqueIdentifier), Guid{}, false}}),
        loginMessage({}),
        bulkMessage(5),
        writePrelogin(Encryption::Off, true),
        {22, 0, 0, 0, 18, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 0, 2, 4, 'a', 0, 'b', 0},
    };
    for (int round = 0; round < 40000; ++round) {
        Buffer bytes = seeds[static_cast<std::size_t>(round) % std::size(seeds)];
        for (unsigned i = 0; i < 1 + random() % 4; ++i)
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        if (random() % 4 == 0) bytes.resize(random() % bytes.size());
        const Version version = round % 7 == 0 ? Version::V71 : Version::V74;
        expectNoSurprise(bytes, [&](const Buffer& b) { (void)readCalls(b, version); });
        expectNoSurprise(bytes, [](const Buffer& b) { (void)readLogin(b); });
        expectNoSurprise(bytes, [](const Buffer& b) { (void)readPrelogin(b); });
        expectNoSurprise(bytes, [](const Buffer& b) { (void)readTransaction(b); });
        expectNoSurprise(bytes, [&](const Buffer& b) { (void)readBatch(b, version); });
        expectNoSurprise(bytes, [&](const Buffer& b) {
            BulkReader reader(version, 1000);
            reader.feed(b);
            reader.endOfMessage();
            while (reader.next() != BulkReader::State::End) continue;
        });
        expectNoSurprise(bytes, [](const Buffer& b) {
            PacketReader reader;
            reader.feed(b);
            while (reader.next()) continue;
        });
    }
}

}  // namespace
}  // namespace sandbox::tds
