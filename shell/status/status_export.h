// The status grid taken elsewhere: as text for the clipboard, and as a spreadsheet with a sheet of tills and one of log
// lines. The tills stand as they are arranged on the screen.
#pragma once

#include <QString>

namespace torvik {

class StatusTreeModel;
class TfraOppgjorStatus;

// A line a till under a line of captions, separated by tabs.
[[nodiscard]] QString statusAsText(const StatusTreeModel& model);
// Raises EngineError with the file's name when it cannot be written.
void writeStatusSpreadsheet(const StatusTreeModel& model, const TfraOppgjorStatus& status, const QString& file);

}  // namespace torvik
