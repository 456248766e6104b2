// The rows of a BULK_LOAD message ([MS-TDS] 2.2.6.1), taken from its packets as they come, so that a load of any size
// needs no more memory than its longest row.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sandbox/store/values/value.h"
#include "sandbox/tds/bytes.h"
#include "sandbox/tds/type_info.h"

namespace sandbox::tds {

struct BulkColumn {
    std::string name;
    WireType type;
};

class BulkReader {
public:
    // maxRow: a row longer than this ends the load with StreamError.
    BulkReader(Version version, std::size_t maxRow) : version_(version), maxRow_(maxRow) {}

    void feed(ByteSpan bytes);
    void endOfMessage() { ended_ = true; }

    enum class State { NeedsMore, Columns, Row, End };
    // What comes next. After Columns columns() is filled, after Row cells(); after End nothing more comes. Raises
    // StreamError, UnsupportedType, InvalidValue, and Truncated where the message ended within a row.
    [[nodiscard]] State next();

    [[nodiscard]] const std::vector<BulkColumn>& columns() const { return columns_; }
    [[nodiscard]] const std::vector<Value>& cells() const { return cells_; }

private:
    State parse(Reader& in);
    void readColumns(Reader& in);

    Version version_;
    std::size_t maxRow_;
    std::vector<std::uint8_t> buffer_;
    std::size_t start_ = 0;
    std::size_t enough_ = 0;  // no use to try again with fewer bytes
    bool ended_ = false;
    bool described_ = false;
    bool done_ = false;  // its DONE has come
    std::vector<BulkColumn> columns_;
    std::vector<Value> cells_;
};

}  // namespace sandbox::tds
