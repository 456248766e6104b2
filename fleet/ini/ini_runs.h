// The tills' configuration files, "TorvikPOS.ini": read from all chosen tills, and changed on them. The till's software
// puts its file into BINARYOBJECT and takes changes from there. See docs/fleet.md.
#pragma once

#include <QString>

namespace torvik {

class RunParts;
struct TTorvikPOSConfig;

// Reads every till's file and gives it to OnTorvikPosIniReceivedEvent; an empty one for a till that has none.
void GetTorvikPOSIni(RunParts& parts);

// Sends a file of changes to every till of the roster, up to the first whose schema is too old for it: that one ends
// the walk without a word.
void UpgradeTorvikPOSini(RunParts& parts, const QString& ANewVersionIniFile);

// One till's identity, from its own settings; no walk. Raises EngineError when the till has none, and what the session
// raises when it cannot be reached.
void ListConfiguration(RunParts& parts, int Ku_Id, const QString& Kassenummer, TTorvikPOSConfig& TorvikPOSConfig);

}  // namespace torvik
