// Customers, staff and the till's own settings as a send leaves them.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

void sendSettings(const Send& send);
void sendStaff(const Send& send);
void sendCustomerGroups(const Send& send);
void sendCustomers(const Send& send);

}  // namespace sandbox::chain
