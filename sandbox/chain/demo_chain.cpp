// Starting the servers and filling their databases, through sessions of their own engines.
#include "sandbox/chain/demo_chain.h"

#include <arpa/inet.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <set>
#include <stdexcept>

#include "sandbox/chain/bulk_rows.h"
#include "sandbox/chain/install.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::chain {

namespace {

// Keeps the first error of a batch; rows go nowhere.
class FirstError final : public SilentReply {
public:
    void error(const Message& message) override {
        if (text_.empty())
            text_ = message.text + " (error " + std::to_string(message.number) + ", line " +
                    std::to_string(message.line) + ")";
    }

    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

void runIn(Session& session, std::string_view batch) {
    FirstError reply;
    session.batch(batch, reply);
    if (!reply.text().empty()) throw std::runtime_error(reply.text() + " in: " + std::string(batch.substr(0, 200)));
}

// Makes the database unless it is there; true when it is new.
bool makeDatabase(Server& server, const std::string& name) {
    const auto databases = server.engine().databases();
    if (std::find(databases.begin(), databases.end(), name) != databases.end()) return false;
    Session session(server.engine(), LoginInfo{.user = "sa", .program = "torvik-sandbox"});
    runIn(session, "CREATE DATABASE " + name);
    return true;
}

LoginInfo loginTo(const std::string& database) {
    return {.user = "sa", .database = database, .program = "torvik-sandbox"};
}

void fill(Server& server, const std::string& database, const std::function<void(const Filling&)>& install) {
    if (!makeDatabase(server, database)) return;
    {
        Session session(server.engine(), loginTo(database));
        install({.run = [&session](std::string_view batch) { runIn(session, batch); },
                 .insert = [&session](const TableData& table) { loadRows(session, table); }});
    }
    malloc_trim(0);  // a filled chain would keep hundreds of megabytes of its INSERT texts and trees otherwise
}

// The rows of a table whose key, within its first two columns, was not there before.
TableData newRows(TableData table, const std::vector<TableData>& before) {
    const auto key = [](const std::vector<Cell>& row) { return cellText(row.at(0)) + "|" + cellText(row.at(1)); };
    std::set<std::string> known;
    for (const TableData& old : before)
        if (old.table == table.table)
            for (const auto& row : old.rows) known.insert(key(row));
    std::erase_if(table.rows, [&](const std::vector<Cell>& row) { return known.contains(key(row)); });
    return table;
}

std::string addressBehind(const std::string& first, std::size_t steps) {
    in_addr address{};
    if (inet_pton(AF_INET, first.c_str(), &address) != 1)
        throw std::runtime_error("'" + first + "' is not an IPv4 address");
    address.s_addr = htonl(ntohl(address.s_addr) + static_cast<std::uint32_t>(steps));
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

}  // namespace

// The databases made on a server elsewhere.
class DemoChain::MadeDatabases {
public:
    explicit MadeDatabases(const OtherServer& server) : run_(server.run), drop_(server.drop) {}
    ~MadeDatabases() {
        for (const std::string& name : names_) {
            try {
                drop_(name);
            } catch (const std::exception& e) {
                std::cerr << name << " stays: " << e.what() << std::endl;
            }
        }
    }
    MadeDatabases(const MadeDatabases&) = delete;
    MadeDatabases& operator=(const MadeDatabases&) = delete;

    [[nodiscard]] Filling make(const std::string& name) {
        run_("master", "CREATE DATABASE " + name);
        names_.push_back(name);
        return {.run = [this, name](std::string_view batch) { run_(name, batch); }};
    }

private:
    decltype(OtherServer::run) run_;
    decltype(OtherServer::drop) drop_;
    std::vector<std::string> names_;
};

DemoChain::DemoChain(DemoChainOptions options)
    : options_(std::move(options)), chain_(options_.model ? std::move(*options_.model) : makeChain(options_.chain)) {
    options_.model.reset();
    if (options_.elsewhere)
        makeElsewhere();
    else
        startServers();
}

DemoChain::~DemoChain() = default;
DemoChain::DemoChain(DemoChain&&) noexcept = default;
DemoChain& DemoChain::operator=(DemoChain&&) noexcept = default;

Server& DemoChain::backOffice() {
    if (!isSandbox()) throw std::logic_error("the demo chain's back office is on another's server");
    return *backOffice_;
}

Server& DemoChain::till(std::size_t index) {
    if (!isSandbox()) throw std::logic_error("the demo chain's tills are on another's server");
    return *tills_.at(index);
}

void DemoChain::startServers() {
    for (const Till& till : chain_.tills) {
        tills_.push_back(start(till.database, tillHost(tills_.size()), 0));
        fill(*tills_.back(), till.database, [&](const Filling& filling) { installTill(chain_, till, filling); });
    }
    backOffice_ = start(kBackOfficeDatabase, options_.host, options_.port);
    const auto address = [this](const Till& till) {
        return addressOf(static_cast<std::size_t>(&till - chain_.tills.data()));
    };
    fill(*backOffice_, kBackOfficeDatabase,
         [&](const Filling& filling) { installBackOffice(chain_, address, filling); });
    // A chain found on disk has been moved to new ports.
    for (const Till& till : chain_.tills)
        runInBackOffice("UPDATE Internkundekasse SET Ikk_Server = '" + address(till).server +
                        "' WHERE Ikk_Database = '" + till.database + "'");
}

void DemoChain::makeElsewhere() {
    const OtherServer& server = *options_.elsewhere;
    backOfficeDatabase_ = server.prefix + kBackOfficeDatabase;
    made_ = std::make_unique<MadeDatabases>(server);
    for (Till& till : chain_.tills) {
        till.database = server.prefix + till.database;
        installTill(chain_, till, made_->make(till.database));
    }
    const auto address = [&server](const Till& till) {
        return TillAddress{server.address, till.database, server.user, server.password};
    };
    installBackOffice(chain_, address, made_->make(backOfficeDatabase_));
}

std::unique_ptr<Server> DemoChain::start(const std::string& name, const std::string& host, std::uint16_t port) {
    ServerOptions options;
    options.host = host;
    options.port = port;
    options.saPassword = options_.saPassword;
    options.logins = {{kTillUser, kTillPassword}};
    options.engine.serverName = name;
    if (options_.dataDir) options.engine.dataDir = *options_.dataDir / name;
    return std::make_unique<Server>(std::move(options));
}

TillAddress DemoChain::addressOf(std::size_t index) const {
    const std::string& database = chain_.tills.at(index).database;
    if (const auto& server = options_.elsewhere) return {server->address, database, server->user, server->password};
    return {tillHost(index) + "," + std::to_string(tills_.at(index)->port()), database, kTillUser, kTillPassword};
}

std::string DemoChain::tillHost(std::size_t index) const {
    if (options_.firstTillHost.empty()) return options_.host;
    return addressBehind(options_.firstTillHost, index);
}

std::string DemoChain::dataLink() const {
    const auto& server = options_.elsewhere;
    return "Provider=SQLOLEDB.1;Password=" + (server ? server->password : options_.saPassword) +
           ";Persist Security Info=True;User ID=" + (server ? server->user : "sa") +
           ";Initial Catalog=" + backOfficeDatabase_ +
           ";Data Source=" + (server ? server->address : options_.host + "," + std::to_string(backOffice_->port()));
}

void DemoChain::runInBackOffice(std::string_view batch) {
    if (options_.elsewhere) return options_.elsewhere->run(backOfficeDatabase_, batch);
    Session session(backOffice_->engine(), loginTo(kBackOfficeDatabase));
    runIn(session, batch);
}

void DemoChain::runInTill(std::size_t index, std::string_view batch) {
    const std::string& database = chain_.tills.at(index).database;
    if (options_.elsewhere) return options_.elsewhere->run(database, batch);
    Session session(tills_.at(index)->engine(), loginTo(database));
    runIn(session, batch);
}

void DemoChain::sellAnotherDay(std::size_t index) {
    Till& till = chain_.tills.at(index);
    const std::vector<TableData> before = tillSales(chain_, till);
    addDay(chain_, till);
    for (const TableData& table : tillSales(chain_, till))
        for (const std::string& batch : insertBatches(newRows(table, before))) runInTill(index, batch);
    for (const Voucher& voucher : till.vouchers)
        runInTill(index, "UPDATE KUPONG SET KUP_BRUKT_ANTALL = " + std::to_string(voucher.used) +
                             ", KUP_MERKET_BRUKT = " + (voucher.used >= voucher.issued ? "1" : "0") +
                             " WHERE KUP_ID = " + std::to_string(voucher.id));
}

}  // namespace sandbox::chain
