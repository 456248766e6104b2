// Gift cards and credit notes as a send leaves them, and what the back office notes of them.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

void sendGiftCards(const Send& send);
void sendCreditNotes(const Send& send);

}  // namespace sandbox::chain
