// The line that a connection goes over, as the operating system knows it: a machine that has vanished is noticed,
// however long a statement may take. Used by Connection and BulkCopy. FreeTDS shows its socket; Microsoft's driver does
// not, and watches its line by itself. See docs/failures.md.
#pragma once

namespace torvik::db::odbc {

constexpr int kNoSocket = -1;

// From now on the line counts as lost when the other machine has let 60 seconds of probes, or of what was sent to it,
// go unanswered. The machine answers them, and not the server: a statement may take as long as it likes.
void watchLine(int socket);

// The other end may leave what is sent to it unread for as long as it likes, until watchLine: rows that wait for a
// lock.
void allowUnread(int socket);

// False: the other end has closed or lost the connection, and this machine has heard of it.
[[nodiscard]] bool lineStands(int socket);

}  // namespace torvik::db::odbc
