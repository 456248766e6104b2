// The stand-in server as a program.
#include "tests/sandbox/server/run_program.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

// The sandbox's own program stands beside the test's.
class Program : public ::testing::Test {
protected:
    std::string program = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "torvik-sandbox").string();
};

TEST_F(Program, SaysWhereItListensAndEndsCleanlyWhenAsked) {
    TemporaryFolder folder;
    folder.write(
        "run.sh",
        program + " --port 0 --sa-password secret --data " + folder.file("data") + " >" + folder.file("out") +
            " & pid=$!\n"
            "until grep -qs listening " +
            folder.file("out") +
            "; do kill -0 $pid || exit 9; done\n"
            "port=$(sed -n '1s/.*://p' " +
            folder.file("out") +
            ")\n"
            "printf 'SELECT @@SERVERNAME AS s\\ngo\\nexit\\n' | tsql -o q -H 127.0.0.1 -p $port -U sa -P secret\n"
            "kill -TERM $pid; wait $pid; echo ended $?\n");
    const Ran ran = runProgram("sh " + folder.file("run.sh"));
    EXPECT_NE(ran.output.find("TORVIKSANDBOX"), std::string::npos) << ran.output;
    EXPECT_TRUE(ran.output.ends_with("ended 0\n")) << ran.output;
    EXPECT_TRUE(folder.read("out").starts_with("listening on 127.0.0.1:"));
}

TEST_F(Program, DemoChainListensOnItsPortsAndTellsThem) {
    TemporaryFolder folder;
    folder.write(
        "run.sh",
        program + " --chain departments=1,tills=2,days=1 --sa-password secret >" + folder.file("out") +
            " & pid=$!\n"
            "until grep -qs 'data link' " +
            folder.file("out") +
            "; do kill -0 $pid || exit 9; done\n"
            "for port in $(sed -n 's/.* on 127.0.0.1[:,]\\([0-9]*\\).*/\\1/p' " +
            folder.file("out") +
            ")\n"
            "do printf 'SELECT @@SERVERNAME AS s\\ngo\\nexit\\n' | tsql -o q -H 127.0.0.1 -p $port -U sa -P secret | tail -1; done\n"
            "kill -INT $pid; wait $pid; echo ended $?\n");
    const Ran ran = runProgram("sh " + folder.file("run.sh"));
    EXPECT_TRUE(ran.output.ends_with("ended 0\n")) << ran.output;
    EXPECT_EQ(std::count(ran.output.begin(), ran.output.end(), '\n'), 4) << ran.output;
    EXPECT_NE(folder.read("out").find("Initial Catalog=TorvikBackOffice"), std::string::npos);
}

TEST_F(Program, TillsOfADemoChainCanEachHaveAnAddress) {
    TemporaryFolder folder;
    folder.write(
        "run.sh",
        program + " --chain departments=1,tills=3,days=1 --till-hosts 127.0.1.254 --sa-password secret >" +
            folder.file("out") +
            " & pid=$!\n"
            "until grep -qs 'data link' " +
            folder.file("out") +
            "; do kill -0 $pid || exit 9; done\n"
            "sed -n 's/^till .* on \\([0-9.]*\\),\\([0-9]*\\) .*/\\1 \\2/p' " +
            folder.file("out") +
            " | while read -r host port\n"
            "do printf 'SELECT 1 AS eins\ngo\nexit\n' | tsql -o q -H $host -p $port -U pos -P Pos-1 >/dev/null && echo $host; done\n"
            "kill -TERM $pid; wait $pid\n");
    EXPECT_EQ(runProgram("sh " + folder.file("run.sh")).output, "127.0.1.254\n127.0.1.255\n127.0.2.0\n");
}

TEST_F(Program, DatabasesOfOneThatWasKilledGoWhenTheNextStartsAndThoseOfOneThatRunsStay) {
    TemporaryFolder folder;
    folder.write("run.sh", "start() {\n" + program + " --port 0 >" + folder.file("$1") +
                               " & pid=$!\n"
                               "until grep -qs listening " +
                               folder.file("$1") +
                               "; do kill -0 $pid || exit 9; done\n"
                               "}\n"
                               "folder() { readlink /proc/$pid/fd/* | grep -o '.*/torvik-sandbox-[^/]*' | head -1; }\n"
                               "start first; killed=$pid; killeds=$(folder)\n"
                               "start second; running=$pid; runnings=$(folder)\n"
                               "[ -d \"$killeds\" ] && [ -d \"$runnings\" ] && echo both\n"
                               "kill -KILL $killed; wait $killed 2>/dev/null\n"
                               "start third\n"
                               "[ -d \"$killeds\" ] || echo gone\n"
                               "[ -d \"$runnings\" ] && echo kept\n"
                               "kill -TERM $running $pid; wait\n");
    EXPECT_EQ(runProgram("sh " + folder.file("run.sh")).output, "both\ngone\nkept\n");
}

TEST_F(Program, BadArgumentsAreExplained) {
    struct {
        const char* arguments;
        const char* text;
    } cases[] = {{"--port 70000", "--port takes a number from 0 to 65535, not '70000'"},
                 {"--port", "--port needs a value"},
                 {"--encryption maybe", "--encryption takes off, offered or required"},
                 {"--login x", "--login takes NAME=PASSWORD"},
                 {"--chain shops=3", "--chain: "},
                 {"--till-hosts 127.0.1.1", "--till-hosts needs --chain"},
                 {"--nonsense", "unknown option --nonsense"},
                 {"--chain tills=1 --server-name X", "--server-name does not go with --chain"}};
    for (const auto& c : cases) {
        const Ran ran = runProgram(program + " " + c.arguments);
        EXPECT_EQ(ran.status, 2) << c.arguments << ran.output;
        EXPECT_NE(ran.output.find(c.text), std::string::npos) << ran.output;
    }
    EXPECT_EQ(runProgram(program + " --help").status, 0);
}

TEST_F(Program, PortThatIsTakenIsAnError) {
    Server server(serverOptions());
    const Ran ran = runProgram(program + " --port " + std::to_string(server.port()));
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.output.find("cannot have 127.0.0.1:"), std::string::npos) << ran.output;
}

}  // namespace
}  // namespace sandbox::test
