// The main function of the window's tests: as the others', with a whole application in the program's style on
// Qt's offscreen platform.
#include <gtest/gtest.h>

#include <QApplication>

#include "shell/look/program_style.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setStyle(new torvik::ProgramStyle);
    return RUN_ALL_TESTS();
}
