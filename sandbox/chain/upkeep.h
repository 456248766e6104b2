// How the tills' servers are looked after, as their msdb tells it: a night's backup and a weekly job at each, well at
// some tills and badly at others. Made up like the rest of the chain: no job has run, and no backup has been made.
#pragma once

namespace sandbox::chain {

class DemoChain;

// For every till of a chain on servers of its own; a till whose server knows a job already keeps what it has.
void giveUpkeep(DemoChain& chain);

}  // namespace sandbox::chain
