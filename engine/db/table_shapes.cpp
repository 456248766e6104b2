// See table_shapes.h.
#include "engine/db/table_shapes.h"

#include "engine/db/table_shape.h"

namespace torvik::db {

TableShapes::TableShapes() = default;
TableShapes::~TableShapes() = default;

std::shared_ptr<TableShape> TableShapes::Of(Connection& connection, const QString& table, int timeout) {
    std::shared_ptr<TableShape>& known = shapes_[table];
    if (!known) known = std::make_shared<TableShape>(tableShape(connection, table, timeout));
    return known;
}

void TableShapes::Forget() {
    shapes_.clear();
}

}  // namespace torvik::db
