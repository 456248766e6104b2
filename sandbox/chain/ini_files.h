// The configuration file that each till's software has put into its database: a row of BINARYOBJECT on its way to the
// back office. Made up like the rest of the chain.
#pragma once

namespace sandbox::chain {

class DemoChain;

// For every till whose version marks such rows (72 on); a till that has the row keeps it.
void giveIniFiles(DemoChain& chain);

}  // namespace sandbox::chain
