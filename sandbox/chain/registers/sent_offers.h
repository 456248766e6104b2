// Price offers, currencies, reasons and payment forms as a send leaves them.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

void sendOffers(const Send& send);
void sendCurrencies(const Send& send);
void sendReasons(const Send& send);
void sendPaymentForms(const Send& send);

}  // namespace sandbox::chain
