// The story of a till as it stands when it is asked for, over the window and beside it: a run goes on while it is read.
// The status view opens it.
#pragma once

#include <QDialog>

#include "shell/status/till_story.h"

namespace torvik {

class TillStoryDialog : public QDialog {
    Q_OBJECT

public:
    explicit TillStoryDialog(const TillStory& story, QWidget* parent = nullptr);
};

}  // namespace torvik
