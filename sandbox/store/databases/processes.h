// The sessions of one server as sysprocesses shows them, and where session ids come from. Sessions keep their own row
// up to date; any session may read all of them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace sandbox {

struct Process {
    int spid = 0;
    int databaseId = 1;
    int openTransactions = 0;
    int isolation = 2;     // as sys.dm_exec_sessions numbers the levels: 1 uncommitted, 2 committed ... 5 snapshot
    int lockTimeout = -1;  // milliseconds; -1: for ever
    std::string language = "us_english";
    bool running = false;  // "runnable" inside a batch, else "sleeping"
    std::string login;
    std::string host;
    std::string program;
    std::string command = "AWAITING COMMAND";
    std::int64_t loginTime = 0;  // datetime ticks
    std::int64_t lastBatch = 0;
};

class ProcessList {
public:
    int add(Process process);  // gives it the lowest free id from 51 on
    void update(int spid, const std::function<void(Process&)>& change);
    void remove(int spid);
    [[nodiscard]] std::vector<Process> all() const;  // by id
    [[nodiscard]] bool uses(int databaseId, int exceptSpid) const;

private:
    mutable std::mutex mutex_;
    std::map<int, Process> processes_;
};

}  // namespace sandbox
