// Price categories and prices as a send with prices leaves them.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

void sendPrices(const Send& send);

}  // namespace sandbox::chain
