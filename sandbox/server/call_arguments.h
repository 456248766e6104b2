// The parameters of a call of one of the server's own procedures, found by place or by name.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/tds/requests.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::server {

class CallArguments {
public:
    CallArguments(std::string procedure, std::span<const tds::CallParameter> parameters)
        : procedure_(std::move(procedure)), parameters_(parameters) {}

    // 201 where a needed one is missing, 214 where it is of another type.
    [[nodiscard]] std::int32_t integer(std::size_t place, std::string_view name) const;
    [[nodiscard]] std::optional<std::int32_t> integerIfGiven(std::size_t place, std::string_view name) const;
    [[nodiscard]] std::string text(std::size_t place, std::string_view name) const;
    [[nodiscard]] std::string textOrEmpty(std::size_t place, std::string_view name) const;

    // Those from a place on, for the statement that the call executes.
    [[nodiscard]] std::vector<Argument> rest(std::size_t place) const;
    [[nodiscard]] std::size_t size() const { return parameters_.size(); }
    // The name by which the client knows an output parameter.
    [[nodiscard]] std::string nameAt(std::size_t place) const;

private:
    [[nodiscard]] const tds::CallParameter* find(std::size_t place, std::string_view name) const;
    [[nodiscard]] const tds::CallParameter& need(std::size_t place, std::string_view name) const;

    std::string procedure_;
    std::span<const tds::CallParameter> parameters_;
};

[[nodiscard]] Argument toArgument(const tds::CallParameter& parameter);
[[nodiscard]] Typed intValue(std::int64_t value);

}  // namespace sandbox::server
