// Discount cards and the discount matrix as a send leaves them.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

void sendDiscountCards(const Send& send);
void sendDiscountMatrix(const Send& send);

}  // namespace sandbox::chain
