// What the operator sees of one copy: how far it is, and a button that cancels it. The window (shell) has the real one.
#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "fleet/share/file_share.h"

namespace torvik {

class CopyWindow {
public:
    virtual ~CopyWindow() = default;

    virtual void show() = 0;  // and paints itself
    [[nodiscard]] virtual int position() const = 0;
    virtual void setProgress(int percent, const QString& text) = 0;

    int Cancel = 0;  // -1 once the operator wants no more of it
};

// What a copy uses of its surroundings.
struct CopyTools {
    std::function<std::unique_ptr<FileShare>()> Share;    // unset: the platform's
    std::function<std::unique_ptr<CopyWindow>()> Window;  // unset: a copy shows nothing and is not cancelled
};

}  // namespace torvik
