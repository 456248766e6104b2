// The program of the fault tests as a process of its own, to be killed: one send over the chain whose data link is its
// first argument, with its notes in the folder that is the second. Ends with 0 when the run told no error.
#include <sys/prctl.h>

#include <QCoreApplication>
#include <csignal>

#include "tests/faults/send/send_program.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 3) return 2;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // it never outlives the test
    torvik::test::SendProgram program(argv[1], QString::fromLocal8Bit(argv[2]));
    const QString ended = program.send();
    return ended.isEmpty() && program.errors().isEmpty() ? 0 : 1;
}
