// The settlement run: walks the roster and fetches the settlements of each till into the back office. A till that fails
// is logged and passed over. See docs/settlements.md.
#pragma once

namespace torvik {

class NightShare;
class RunParts;

// Lets no exception out. Messages are pumped all the time; a command that starts during a run is kept out by the
// window, which disarms the automatic run first, and a tick by TimerBusy. In a night that is shared it serves the tills
// that its share leaves to it.
void ExecuteOppgjor(RunParts& parts, NightShare* share = nullptr);

}  // namespace torvik
