// Walks over the tree, and names as errors show them.
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::ast {
namespace {

void visitList(const ExprList& list, const std::function<void(const Expr&)>& visit) {
    for (const ExprPtr& expr : list) visit(*expr);
}

void visitOptional(const ExprPtr& expr, const std::function<void(const Expr&)>& visit) {
    if (expr) visit(*expr);
}

}  // namespace

Insert::Insert() = default;
Insert::Insert(Insert&&) noexcept = default;
Insert& Insert::operator=(Insert&&) noexcept = default;
Insert::~Insert() = default;

std::string ObjectName::written() const {
    if (!database.empty()) return database + "." + schema + "." + name;
    if (!schema.empty()) return schema + "." + name;
    return name;
}

std::string ColumnRef::written() const {
    return table ? table->written() + "." + name : name;
}

bool isCondition(const Expr& expr) {
    return std::visit(Overloaded{
                          [](const Compare&) { return true; },
                          [](const Quantified&) { return true; },
                          [](const Logical&) { return true; },
                          [](const Not&) { return true; },
                          [](const IsNull&) { return true; },
                          [](const Between&) { return true; },
                          [](const Like&) { return true; },
                          [](const In&) { return true; },
                          [](const Exists&) { return true; },
                          [](const auto&) { return false; },
                      },
                      expr.node);
}

void forEachChild(const Expr& expr, const std::function<void(const Expr&)>& visit) {
    std::visit(Overloaded{
                   [&](const Unary& node) { visit(*node.operand); },
                   [&](const Binary& node) {
                       visit(*node.left);
                       visit(*node.right);
                   },
                   [&](const Case& node) {
                       visitOptional(node.operand, visit);
                       for (const Case::Branch& branch : node.branches) {
                           visit(*branch.when);
                           visit(*branch.then);
                       }
                       visitOptional(node.otherwise, visit);
                   },
                   [&](const Cast& node) {
                       visit(*node.operand);
                       visitOptional(node.style, visit);
                   },
                   [&](const Call& node) {
                       visitList(node.arguments, visit);
                       if (!node.over) return;
                       visitList(node.over->partitionBy, visit);
                       for (const OrderItem& item : node.over->orderBy) visit(*item.expr);
                   },
                   [&](const Collate& node) { visit(*node.operand); },
                   [&](const Compare& node) {
                       visit(*node.left);
                       visit(*node.right);
                   },
                   [&](const Quantified& node) { visit(*node.left); },
                   [&](const Logical& node) { visitList(node.operands, visit); },
                   [&](const Not& node) { visit(*node.operand); },
                   [&](const IsNull& node) { visit(*node.operand); },
                   [&](const Between& node) {
                       visit(*node.operand);
                       visit(*node.low);
                       visit(*node.high);
                   },
                   [&](const Like& node) {
                       visit(*node.operand);
                       visit(*node.pattern);
                       visitOptional(node.escape, visit);
                   },
                   [&](const In& node) {
                       visit(*node.operand);
                       visitList(node.list, visit);
                   },
                   [](const auto&) {},
               },
               expr.node);
}

void forEachExpr(const Expr& expr, const std::function<void(const Expr&)>& visit) {
    visit(expr);
    forEachChild(expr, [&](const Expr& child) { forEachExpr(child, visit); });
}

void forEachStatement(const Statements& statements, const std::function<void(const Statement&)>& visit) {
    const std::function<void(const Statement&)> enter = [&](const Statement& statement) {
        visit(statement);
        std::visit(Overloaded{
                       [&](const Block& node) { forEachStatement(node.body, visit); },
                       [&](const If& node) {
                           enter(*node.then);
                           if (node.otherwise) enter(*node.otherwise);
                       },
                       [&](const While& node) { enter(*node.body); },
                       [&](const TryCatch& node) {
                           forEachStatement(node.tryBody, visit);
                           forEachStatement(node.catchBody, visit);
                       },
                       [](const auto&) {},
                   },
                   statement.node);
    };
    for (const StatementPtr& statement : statements) enter(*statement);
}

}  // namespace sandbox::ast
