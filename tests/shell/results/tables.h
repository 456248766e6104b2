// Tables in memory, as a test states them.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "engine/db/mem_table.h"

namespace torvik::test {

using Columns = std::vector<std::pair<const char*, db::FieldType>>;

inline std::shared_ptr<db::MemTable> table(const Columns& columns, const std::vector<std::vector<db::Value>>& rows) {
    auto made = std::make_shared<db::MemTable>();
    for (const auto& [name, type] : columns) made->AddColumn(QString::fromUtf8(name), type);
    made->Open();
    for (const auto& row : rows) {
        made->Append();
        for (std::size_t i = 0; i < row.size(); ++i) made->Fields(static_cast<int>(i)).SetValue(row[i]);
        made->Post();
    }
    return made;
}

}  // namespace torvik::test
