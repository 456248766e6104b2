// What is fuzzed: each target takes any bytes, and must neither crash nor go on for ever. libFuzzer drives them in the
// preset "fuzz"; the ordinary suite runs them on their seeds and on what fuzzing has found (corpus/).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox::fuzz {

using Bytes = std::span<const std::uint8_t>;

void packets(Bytes input);   // a client's byte stream in pieces, cut into packets
void login(Bytes input);     // PRELOGIN or LOGIN7
void requests(Bytes input);  // first byte: the kind of message and the version; then the message
void parser(Bytes input);    // a batch, lexed and parsed
void batch(Bytes input);     // a batch, compiled and run in a small database

struct Target {
    std::string_view name;
    void (*run)(Bytes input);
    std::vector<std::string> (*seeds)();
};

// Inputs to start from: messages as clients send them, the batches of the test cases and of the demo chain.
[[nodiscard]] std::vector<std::string> packetSeeds();
[[nodiscard]] std::vector<std::string> loginSeeds();
[[nodiscard]] std::vector<std::string> requestSeeds();
[[nodiscard]] std::vector<std::string> batchSeeds();

inline constexpr std::array<Target, 5> kTargets = {{
    {"packets", &packets, &packetSeeds},
    {"login", &login, &loginSeeds},
    {"requests", &requests, &requestSeeds},
    {"parser", &parser, &batchSeeds},
    {"batch", &batch, &batchSeeds},
}};

}  // namespace sandbox::fuzz
