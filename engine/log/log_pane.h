// The visible logs as the engine sees them. The window implements ILogPane over its rich-text panes; StringListPane is
// the form without a window.
#pragma once

#include <QString>
#include <QStringList>

namespace torvik {

enum class PaneColor { Normal, Red };

class ILogPane {
public:
    virtual ~ILogPane() = default;
    virtual void AddLine(const QString& line) = 0;
    [[nodiscard]] virtual QStringList Lines() const = 0;
    virtual void Clear() = 0;
    // The colour of the lines added from now on.
    virtual void SetColor(PaneColor color) = 0;
    // Writes the lines as plain text in UTF-8 over whatever the file held; raises EngineError when it cannot.
    virtual void SaveLines(const QString& path) const;
};

class StringListPane : public ILogPane {
public:
    void AddLine(const QString& line) override { lines_.append(line); }
    [[nodiscard]] QStringList Lines() const override { return lines_; }
    void Clear() override { lines_.clear(); }
    void SetColor(PaneColor) override {}

private:
    QStringList lines_;
};

// Writes lines as a text file in UTF-8; raises EngineError with the file name when it cannot.
void SaveTextLines(const QString& path, const QStringList& lines);

}  // namespace torvik
