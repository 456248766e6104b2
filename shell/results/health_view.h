// The pane "Helsetilstand": how old the tills' backups are, and which of their jobs have failed. Both lists sort by a
// press on a caption, and can be copied and exported; old backups have a colour. Owned by the window.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "engine/db/mem_table.h"

namespace torvik {

class Grid;
class TableModel;
struct THealthSummary;

// What taking a list elsewhere needs of the window.
struct HealthTools {
    std::function<QString()> askSpreadsheet;  // a name to save under; empty: no
    std::function<void(const QString&)> tell;
    std::function<void(const std::function<void()>&)> guarded;
};

class HealthView : public QWidget {
    Q_OBJECT

public:
    explicit HealthView(HealthTools tools, QWidget* parent = nullptr);

    // Shows what a check has found, and nothing of the one before.
    void showHealth(const THealthSummary& summary);

    std::shared_ptr<db::MemTable> memLastBackupDates;
    std::shared_ptr<db::MemTable> memFailedJobs;

private:
    [[nodiscard]] Grid* list(const char* name, TableModel& model);
    void exportList(const Grid& grid);

    HealthTools tools_;
    TableModel* backups_;
    TableModel* jobs_;
    Grid* backupGrid_;
    Grid* jobGrid_;
};

}  // namespace torvik
