// A node of StatusTreeModel's tree: the root, a group of tills, or a till with its log lines. Children are owned by the
// model, and a node knows its place among its parent's.
#pragma once

#include <QString>
#include <vector>

#include "shell/status/status_arrangement.h"
#include "shell/status/status_tree_model.h"

namespace torvik {

struct StatusTreeModel::Node {
    Kind kind = Kind::Group;  // the root is a group without a parent
    Node* parent = nullptr;   // null for what is not shown, too
    int row = 0;              // among the parent's children
    std::vector<Node*> children;

    StatusGroupKey key;  // of a group

    int statusRow = -1;  // of a till
    int ikKuId = -1;     // with the till number what its log lines go by
    QString kassenr;     // trimmed
    std::vector<int> logRows;

    void insert(int at, Node& child) {
        child.parent = this;
        children.insert(children.begin() + at, &child);
        number(at);
    }
    void remove(Node& child) {
        children.erase(children.begin() + child.row);
        number(child.row);
        child.parent = nullptr;
    }
    void number(int from) {
        for (std::size_t i = static_cast<std::size_t>(from); i < children.size(); ++i)
            children[i]->row = static_cast<int>(i);
    }
    [[nodiscard]] std::vector<int> statusRows() const {
        std::vector<int> rows;
        for (const Node* child : children) {
            if (child->kind == Kind::Till) {
                rows.push_back(child->statusRow);
            } else {
                const std::vector<int> below = child->statusRows();
                rows.insert(rows.end(), below.begin(), below.end());
            }
        }
        return rows;
    }
};

}  // namespace torvik
