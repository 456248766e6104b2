// A statement, or a batch of them, as the exports keep it: pieces of SQL, each as it is sent, with the condition on
// which it belongs to the text and what stands in place of its %s and %d. Most texts are one piece.
#pragma once

#include <QString>
#include <array>
#include <span>

#include "outbound/shape/when.h"

namespace torvik {

// What a place holder stands for. Texts go in with their quotes doubled: each %s stands between quotes.
enum class Arg { None, Ik_Ku_ID, KasseNr, SessionID, DagerSidenEndring, ReplaceItemNumber };

struct Piece {
    const char* sql;
    When when = kAlways;
    std::array<Arg, 3> args{};  // of its place holders, in their order
};

using SqlText = std::span<const Piece>;

// The pieces that hold, a line break between any two, place holders filled in. Raises std::logic_error when a piece
// has not as many place holders as arguments.
[[nodiscard]] QString sqlOf(SqlText text, const SendFacts& facts);

}  // namespace torvik
