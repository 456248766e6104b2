// A page that can be read and written in, with its source as text: a file's own as long as nobody has written in it.
#pragma once

#include <QTextBrowser>

namespace torvik {

class HtmlPane : public QTextBrowser {
    Q_OBJECT

public:
    explicit HtmlPane(QWidget* parent = nullptr);

    // Shows the file's page, decoded as the page says; raises EngineError when it cannot be read.
    void navigate(const QString& file);
    [[nodiscard]] QString pageSource() const;

private:
    QString loaded_;
};

}  // namespace torvik
