// A running server, and the public clients that tests drive against it: programs, and scripts for an interpreter.
#pragma once

#include "tests/sandbox/server/run_program.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {

class Clients : public ::testing::Test {
protected:
    Server server{serverOptions()};
    TemporaryFolder folder;

    [[nodiscard]] std::string port() const { return std::to_string(server.port()); }

    // A batch that only prepares.
    void prepare(const std::string& batch) {
        tds::TdsClient client = loggedIn(server);
        for (const std::string& line : client.batch(batch)) EXPECT_FALSE(line.starts_with("error")) << line;
    }

    Ran tsql(const std::string& batch, const std::string& version = "auto", const std::string& password = "secret") {
        return runProgram("env TDSVER=" + version + " tsql -o q -H 127.0.0.1 -p " + port() + " -U sa -P " + password,
                          batch + "\ngo\nexit\n");
    }

    // The script has `port` at hand, and shows by "passed" that it came to its end.
    void python(const std::string& script) {
        folder.write("client.py", "port = " + port() + "\n" + script + "\nprint('passed')\n");
        const Ran ran = runProgram("/usr/bin/python3 " + folder.file("client.py"));
        EXPECT_EQ(ran.status, 0) << ran.output;
        EXPECT_TRUE(ran.output.ends_with("passed\n")) << ran.output;
    }
    // Of the script's own making: connect().
    void odbc(const std::string& script) {
        python(R"py(
import pyodbc, datetime, decimal
pyodbc.pooling = False
def connect(extra='', **options):
    return pyodbc.connect('DRIVER=FreeTDS;Server=127.0.0.1;Port=%d;UID=sa;PWD=secret;%s' % (port, extra), timeout=20, **options)
)py" + script);
    }
};

}  // namespace sandbox::test
