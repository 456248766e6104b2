// Items as a send leaves them: groups, suppliers, the items themselves, their aliases and parts, extra-sale items.
#pragma once

#include <set>
#include <string>

#include "sandbox/chain/registers/sent_till.h"

namespace sandbox::chain {

[[nodiscard]] std::set<std::string> chosenItems(const Send& send);  // by what of the items is sent
void sendExtraSaleItems(const Send& send);
void sendItems(const Send& send);

}  // namespace sandbox::chain
