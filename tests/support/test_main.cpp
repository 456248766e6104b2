// The main function of every test program: GoogleTest, with a Qt core application so that timers and events work.
// Windows are shown on Qt's offscreen platform unless QT_QPA_PLATFORM says otherwise.
#include <gtest/gtest.h>

#include <QCoreApplication>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
