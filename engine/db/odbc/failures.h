// What the messages of a failed call mean: which of the session layer's failures it is. Used by Connection and Reply.
#pragma once

#include "engine/db/connect_string.h"
#include "engine/db/errors.h"

namespace torvik::db::odbc {

// From the server, not from the driver.
[[nodiscard]] bool fromServer(const ServerMessage& message);
// The driver has cancelled the statement because its time was up.
[[nodiscard]] bool isTimeout(const ServerMessage& message);
// The server closes the connection behind a message of this severity.
[[nodiscard]] bool isFatal(const ServerMessage& message);
// PRINT, changed database and the like: SQLSTATE class 01.
[[nodiscard]] bool isInformation(const ServerMessage& message);

[[nodiscard]] ServerMessage bareMessage(const QString& text);
// "The connection to the server is lost".
[[nodiscard]] ServerMessage lostMessage();

// Of the messages that a refused login left.
[[nodiscard]] ConnectionError connectFailure(QList<ServerMessage> messages, const ConnectSettings& settings);

}  // namespace torvik::db::odbc
