// torvik-sandbox: starts a stand-in SQL Server, or a whole demo chain of them, and runs until it is told to end.
// docs/sandbox.md shows its use.
#include <charconv>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/chain/demo_chain.h"
#include "sandbox/chain/ini_files.h"
#include "sandbox/chain/script_files.h"
#include "sandbox/chain/upkeep.h"
#include "sandbox/server/server.h"

namespace {

constexpr const char* kUsage = R"(Usage: torvik-sandbox [option...]

Starts a stand-in for SQL Server. Its first line of output is "listening on HOST:PORT"; it ends
cleanly on SIGINT and SIGTERM.

  --host HOST             address to listen on (127.0.0.1)
  --port PORT             port to listen on; 0: any free one (0)
  --sa-password PASSWORD  password of the login sa (Torvik-Sandbox-1)
  --login NAME=PASSWORD   a further login; may be given several times
  --server-name NAME      what @@SERVERNAME tells (TORVIKSANDBOX)
  --data DIR              folder of the databases; without it they live in memory
  --encryption MODE       off, offered or required (offered)
  --certificate FILE      PEM file of the certificate; without it one is made at each start
  --key FILE              PEM file of its key; without it the key is in the certificate's file
  --chain OPTIONS         a demo chain, such as departments=3,tills=5,days=2,seed=7: the back office
                          listens on the port given, each till is a server on a port of its own
  --till-hosts FIRST      with --chain: each till listens on an address of its own, from this one on,
                          such as 127.0.1.1 (all on the address of --host)
  --write-scripts DIR     writes the chain as scripts for a real server (--server-name) and ends
  --help                  this text
)";

// What is wrong with the command line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Arguments {
    sandbox::ServerOptions server;
    std::optional<sandbox::chain::ChainOptions> chain;
    std::vector<std::string> notForChains;  // options given that a chain does not take
    std::string firstTillHost;
    std::optional<std::filesystem::path> scripts;
    bool help = false;
};

std::uint16_t portFrom(const std::string& text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw UsageError("--port takes a number from 0 to 65535, not '" + text + "'");
    }
    return port;
}

sandbox::TlsMode tlsModeFrom(const std::string& text) {
    if (text == "off") return sandbox::TlsMode::NotSupported;
    if (text == "offered") return sandbox::TlsMode::Offered;
    if (text == "required") return sandbox::TlsMode::Required;
    throw UsageError("--encryption takes off, offered or required, not '" + text + "'");
}

Arguments parse(const std::vector<std::string>& words) {
    Arguments a;
    a.server.saPassword = "Torvik-Sandbox-1";
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string name = words[i];
        std::optional<std::string> value;
        if (const std::size_t equals = name.find('='); equals != std::string::npos) {
            value = name.substr(equals + 1);
            name.resize(equals);
        }
        if (name == "--help" || name == "-h") {
            a.help = true;
            return a;
        }
        const auto take = [&]() -> std::string {
            if (value) return *value;
            if (i + 1 == words.size()) throw UsageError(name + " needs a value");
            return words[++i];
        };
        if (name == "--host") {
            a.server.host = take();
        } else if (name == "--port") {
            a.server.port = portFrom(take());
        } else if (name == "--sa-password") {
            a.server.saPassword = take();
        } else if (name == "--data") {
            a.server.engine.dataDir = take();
        } else if (name == "--chain") {
            try {
                a.chain = sandbox::chain::parseChainOptions(take());
            } catch (const std::invalid_argument& e) {
                throw UsageError(std::string("--chain: ") + e.what());
            }
        } else if (name == "--till-hosts") {
            a.firstTillHost = take();
        } else if (name == "--write-scripts") {
            a.scripts = take();
        } else if (name == "--login") {
            const std::string login = take();
            const std::size_t equals = login.find('=');
            if (equals == std::string::npos || equals == 0) throw UsageError("--login takes NAME=PASSWORD");
            a.server.logins[login.substr(0, equals)] = login.substr(equals + 1);
            a.notForChains.push_back(name);
        } else if (name == "--server-name") {
            a.server.engine.serverName = take();
            a.notForChains.push_back(name);
        } else if (name == "--encryption") {
            a.server.tls = tlsModeFrom(take());
            a.notForChains.push_back(name);
        } else if (name == "--certificate") {
            a.server.certificateFile = take();
            a.notForChains.push_back(name);
        } else if (name == "--key") {
            a.server.keyFile = take();
            a.notForChains.push_back(name);
        } else {
            throw UsageError("unknown option " + words[i]);
        }
    }
    if (!a.firstTillHost.empty() && !a.chain) throw UsageError("--till-hosts needs --chain");
    if (a.scripts && !a.chain) throw UsageError("--write-scripts needs --chain");
    if (a.scripts) std::erase(a.notForChains, "--server-name");
    if (a.chain && !a.notForChains.empty()) throw UsageError(a.notForChains.front() + " does not go with --chain");
    return a;
}

void tellListening(const sandbox::Server& server) {
    std::cout << "listening on " << server.host() << ':' << server.port() << std::endl;
}

void tellTills(const sandbox::chain::DemoChain& chain) {
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i) {
        const sandbox::chain::Till& till = chain.model().tills[i];
        const sandbox::chain::TillAddress address = chain.addressOf(i);
        std::cout << "till " << chain.model().departmentOf(till).number << '/' << till.number << " on "
                  << address.server << " database " << address.database << " version " << till.version << std::endl;
    }
}

void waitForSignal(const sigset_t& signals) {
    int signal = 0;
    sigwait(&signals, &signal);
}

void runServer(const Arguments& a, const sigset_t& signals) {
    const sandbox::Server server(a.server);
    tellListening(server);
    waitForSignal(signals);
}

void runChain(const Arguments& a, const sigset_t& signals) {
    sandbox::chain::DemoChainOptions options;
    options.chain = *a.chain;
    options.host = a.server.host;
    options.firstTillHost = a.firstTillHost;
    options.port = a.server.port;
    options.saPassword = a.server.saPassword;
    options.dataDir = a.server.engine.dataDir;
    sandbox::chain::DemoChain chain(options);
    giveUpkeep(chain);
    giveIniFiles(chain);
    tellListening(chain.backOffice());
    tellTills(chain);
    std::cout << "data link: " << chain.dataLink() << std::endl;
    waitForSignal(signals);
}

}  // namespace

int main(int argc, char** argv) {
    // Before any thread is started, so that all of them leave these signals to sigwait.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        const Arguments a = parse(std::vector<std::string>(argv + 1, argv + argc));
        if (a.help) {
            std::cout << kUsage;
        } else if (a.scripts) {
            sandbox::chain::writeScripts(sandbox::chain::makeChain(*a.chain), *a.scripts, a.server.engine.serverName);
        } else if (a.chain) {
            runChain(a, signals);
        } else {
            runServer(a, signals);
        }
        return 0;
    } catch (const UsageError& e) {
        std::cerr << "torvik-sandbox: " << e.what() << "\nTry torvik-sandbox --help.\n";
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "torvik-sandbox: " << e.what() << '\n';
        return 1;
    }
}
