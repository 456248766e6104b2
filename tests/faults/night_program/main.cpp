// The program of the tests of shared nights, as a process of its own: one armed tick over the chain whose data link is
// its first argument, with its notes in the folder that is the second, as the leading or as a helping copy ("leads" or
// "helps"). Its ticks pass twenty times as fast as time, so that what the program waits for a quarter of an hour is
// given up in 45 seconds. Ends with 0 when the run told no error.
#include <sys/prctl.h>

#include <QCoreApplication>
#include <csignal>

#include "tests/faults/fault_program.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 4) return 2;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // it never outlives the test
    torvik::test::FaultProgram program(argv[1], QString::fromLocal8Bit(argv[2]));
    torvik::TTorvikPos& engine = program.engine;
    engine.HelpFetching = QByteArray(argv[3]) == "helps";
    engine.ReceiveDataOnly = true;
    engine.StartTime = engine.Seam.now().time();
    engine.Seam.now = [now = engine.Seam.now()] { return now; };  // the minute does not pass meanwhile
    engine.Seam.tickCount = [real = engine.Seam.tickCount] { return 60 * real(); };
    engine.DoOnTimer();
    return program.errors().isEmpty() ? 0 : 1;
}
