// Parameters by place or name.
#include "sandbox/server/call_arguments.h"

#include <limits>

#include "sandbox/server/names.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

[[noreturn]] void wrongType(std::string_view name, std::string_view type) {
    throw SqlError(errorMessage<214, 3>(name, type));
}

}  // namespace

std::int32_t CallArguments::integer(std::size_t place, std::string_view name) const {
    (void)need(place, name);
    if (const auto value = integerIfGiven(place, name)) return *value;
    wrongType(name, "int");
}

std::optional<std::int32_t> CallArguments::integerIfGiven(std::size_t place, std::string_view name) const {
    const tds::CallParameter* p = find(place, name);
    if (p == nullptr || isNull(p->value.value)) return std::nullopt;
    const auto* value = std::get_if<std::int64_t>(&p->value.value);
    if (value == nullptr || !isInteger(p->value.type.id) || *value < std::numeric_limits<std::int32_t>::min() ||
        *value > std::numeric_limits<std::int32_t>::max()) {
        wrongType(name, "int");
    }
    return static_cast<std::int32_t>(*value);
}

std::string CallArguments::text(std::size_t place, std::string_view name) const {
    (void)need(place, name);
    return textOrEmpty(place, name);
}

std::string CallArguments::textOrEmpty(std::size_t place, std::string_view name) const {
    const tds::CallParameter* p = find(place, name);
    if (p == nullptr || isNull(p->value.value)) return {};
    const auto* value = std::get_if<std::string>(&p->value.value);
    if (value == nullptr) wrongType(name, "ntext/nchar/nvarchar");
    return *value;
}

std::vector<Argument> CallArguments::rest(std::size_t place) const {
    std::vector<Argument> out;
    for (std::size_t i = place; i < parameters_.size(); ++i) out.push_back(toArgument(parameters_[i]));
    return out;
}

std::string CallArguments::nameAt(std::size_t place) const {
    return place < parameters_.size() ? parameters_[place].name : std::string();
}

const tds::CallParameter* CallArguments::find(std::size_t place, std::string_view name) const {
    for (const tds::CallParameter& p : parameters_) {
        if (sameName(p.name, name)) return &p;
    }
    return place < parameters_.size() && parameters_[place].name.empty() ? &parameters_[place] : nullptr;
}

const tds::CallParameter& CallArguments::need(std::size_t place, std::string_view name) const {
    if (const tds::CallParameter* p = find(place, name)) return *p;
    throw SqlError(errorMessage<201, 4>(procedure_, name).in(procedure_));
}

Argument toArgument(const tds::CallParameter& parameter) {
    Argument a;
    a.name = parameter.name;
    a.value = parameter.value;
    a.output = parameter.output;
    a.useDefault = parameter.useDefault;
    return a;
}

Typed intValue(std::int64_t value) {
    Typed t;
    t.type.id = TypeId::Int;
    t.value = value;
    return t;
}

}  // namespace sandbox::server
