// What the deletion of items that the back office no longer has leaves on a till.
#pragma once

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

// Nothing, where the back office names no item that takes over the lines of those deleted. What it logs is the till's
// table VareDeleteLogg, a row for each item, kind and reference, with how often it was logged.
void deleteItems(const Send& send);

}  // namespace sandbox::chain
