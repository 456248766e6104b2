// The list of sessions, behind one mutex.
#include "sandbox/store/databases/processes.h"

#include <algorithm>
#include <utility>

namespace sandbox {

namespace {
constexpr int kFirstUserSession = 51;  // below are the server's own
}

int ProcessList::add(Process process) {
    const std::lock_guard guard(mutex_);
    int spid = kFirstUserSession;
    while (processes_.contains(spid)) ++spid;
    process.spid = spid;
    processes_.emplace(spid, std::move(process));
    return spid;
}

void ProcessList::update(int spid, const std::function<void(Process&)>& change) {
    const std::lock_guard guard(mutex_);
    const auto found = processes_.find(spid);
    if (found != processes_.end()) change(found->second);
}

void ProcessList::remove(int spid) {
    const std::lock_guard guard(mutex_);
    processes_.erase(spid);
}

std::vector<Process> ProcessList::all() const {
    const std::lock_guard guard(mutex_);
    std::vector<Process> list;
    for (const auto& [spid, process] : processes_) list.push_back(process);
    return list;
}

bool ProcessList::uses(int databaseId, int exceptSpid) const {
    const std::lock_guard guard(mutex_);
    return std::any_of(processes_.begin(), processes_.end(), [&](const auto& entry) {
        return entry.first != exceptSpid && entry.second.databaseId == databaseId;
    });
}

}  // namespace sandbox
