#include "outbound/shape/when.h"

namespace torvik {

bool When::holds(const SendFacts& facts) const {
    switch (kind) {
        case Kind::Always: return true;
        case Kind::SchemaFrom: return facts.TorvikPOSversion >= schema;
        case Kind::SchemaBelow: return facts.TorvikPOSversion < schema;
        case Kind::ChangesOnly: return facts.ItemUpdateSelection == iusChanged;
        case Kind::NotChangesOnly: return facts.ItemUpdateSelection != iusChanged;
        case Kind::SendPriceAndCustomer: return facts.SendPriceAndCustomer;
        case Kind::DeleteItem: return facts.DeleteItem;
        case Kind::SendCurrency: return facts.SendCurrency;
        case Kind::SendVouchers: return facts.SendVouchers;
        case Kind::TillHasTable: return facts.tillTables.contains(table);
    }
    return false;
}

}  // namespace torvik
