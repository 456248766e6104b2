// A table view in the window's look, for rows that are read and not edited: it scrolls at once however many there are,
// and Ctrl+C takes the chosen rows along.
#pragma once

#include <QString>
#include <QTableView>

namespace torvik {

class Grid : public QTableView {
    Q_OBJECT

public:
    explicit Grid(QWidget* parent = nullptr);

    // Sets the widths by the captions and the rows in sight.
    void fitColumns();
    // The chosen rows in the grid's order under a line of captions, with tabs between cells; empty when none is chosen.
    [[nodiscard]] QString chosenText() const;
    // Puts chosenText on the clipboard; with nothing chosen it stays as it is.
    void copy() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace torvik
