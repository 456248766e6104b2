// The item that a till sells as a gift card: the one that the back office's settings name.
#pragma once

namespace torvik {

namespace db {
class Session;
}
class BackOffice;

// Makes the till's gavekortvare hold that one item, or none if the till has not the item. Where the back office names
// no item the till's table is left as it is.
void RefreshGiftCardItem(BackOffice& office, db::Session& till);

}  // namespace torvik
