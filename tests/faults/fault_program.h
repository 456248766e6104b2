// The program as the cases of a fault run it: with gift cards and credit notes.
#pragma once

#include "tests/support/chain_program.h"

namespace torvik::test {

class FaultProgram : public ChainProgram {
public:
    FaultProgram(const std::string& dataLink, const QString& noteFolder) : ChainProgram(dataLink, noteFolder) {
        engine.IncludeGiftVoucherOnOppgjor = true;
        engine.IncludeCreditCouponOnOppgjor = true;
    }
};

}  // namespace torvik::test
