// The program as the cases of a fault run it: with gift cards and credit notes.
#pragma once

#include "tests/support/chain_program.h"

namespace torvik::test {

class FaultProgram : public ChainProgram {
public:
    explicit FaultProgram(const std::string& dataLink) : ChainProgram(dataLink) {
        engine.IncludeGiftVoucherOnOppgjor = true;
        engine.IncludeCreditCouponOnOppgjor = true;
    }
};

}  // namespace torvik::test
