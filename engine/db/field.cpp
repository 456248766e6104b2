// See field.h.
#include "engine/db/field.h"

#include "engine/db/data_set.h"
#include "engine/db/errors.h"

namespace torvik::db {

Value Field::AsValue() const {
    return owner_.currentValue(index_);
}

template <typename Read>
auto Field::readAs(const Read& read) const {
    const Value value = AsValue();
    try {
        return read(value);
    } catch (const UsageError& e) {
        throw UsageError(QStringLiteral("%1 for field '%2'").arg(e.text(), Name()));
    }
}

qint64 Field::AsInteger() const {
    return readAs([](const Value& value) { return value.toInt(); });
}

double Field::AsFloat() const {
    return readAs([](const Value& value) { return value.toDouble(); });
}

bool Field::AsBoolean() const {
    return readAs([](const Value& value) { return value.toBool(); });
}

DateTime Field::AsDateTime() const {
    return readAs([](const Value& value) { return value.toDateTime(); });
}

bool Field::IsNull() const {
    return AsValue().isNull();
}

void Field::SetValue(const Value& value) {
    owner_.setValue(index_, value);
}

}  // namespace torvik::db
