// See recorded_send.h.
#include "tests/faults/send/recorded_send.h"

#include <algorithm>
#include <cctype>
#include <mutex>
#include <optional>
#include <regex>
#include <set>
#include <utility>

#include "outbound/exports/send_steps.h"

namespace torvik::test {

namespace {

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// However it is spelt.
bool contains(const std::string& text, const std::string& part) {
    return inSmallLetters(text).find(inSmallLetters(part)) != std::string::npos;
}

// The beginning of a text up to the end of its line and to the first thing that is filled in.
std::string beginning(const char* sql) {
    const std::string text = sql;
    return text.substr(0, text.find_first_of("%\n"));
}

// By what the first request of an action is known; none for one that sends nothing.
struct FirstText {
    std::optional<std::string> operator()(const SetTransformation&) const { return {}; }
    std::optional<std::string> operator()(const StartClock&) const { return {}; }
    std::optional<std::string> operator()(const Report&) const { return {}; }
    std::optional<std::string> operator()(const CreateTables& action) const {
        return std::string("drop table ") + action.tables.front()->name;
    }
    std::optional<std::string> operator()(const DropTable& action) const {
        return std::string("drop table ") + action.name;
    }
    std::optional<std::string> operator()(const LoadTable& action) const { return beginning(action.query.front().sql); }
    std::optional<std::string> operator()(const CopyRows& action) const { return beginning(action.query); }
    std::optional<std::string> operator()(const EditOneRow& action) const {
        return beginning(action.query.front().sql);
    }
    std::optional<std::string> operator()(const TillBatch& action) const { return beginning(action.sql.front().sql); }
    std::optional<std::string> operator()(const BuiltTillBatch& action) const {
        return action.sql().section(u'\n', 0, 0).toStdString();
    }
    std::optional<std::string> operator()(const BackOfficeBatch& action) const {
        return beginning(action.sql.front().sql);
    }
    std::optional<std::string> operator()(const Install& action) const {
        return std::string("drop procedure ") + action.procedure->name;
    }
    std::optional<std::string> operator()(const Run& action) const {
        if (!action.procedure->call.empty()) return beginning(action.procedure->call.front().sql);
        return std::string("exec ") + action.procedure->name;
    }
    std::optional<std::string> operator()(const AskForTable&) const { return {}; }  // asked for with the version
    std::optional<std::string> operator()(DriverTask task) const {
        switch (task) {
            case DriverTask::GetGlobalVariables: return "In_SendValutaTilkasse";
            case DriverTask::DrawSessionID: return "TorvikPosSync.SesjonID.";
            case DriverTask::ReadTillVersion: return "@@VERSION";
            case DriverTask::KasseVareAlle: return "KasseVareAlle";
            case DriverTask::AskBackOffice: return "as Svar";
        }
        return {};
    }
};

// The group that an action reads its rows with.
struct GroupOf {
    ReadWith operator()(const LoadTable& action) const { return action.readWith; }
    ReadWith operator()(const CopyRows& action) const { return action.readWith; }
    ReadWith operator()(const EditOneRow& action) const { return action.readWith; }
    ReadWith operator()(const auto&) const { return ReadWith::Nothing; }
};

// By what the first request to the till is known of an action whose rows were read with others: there is none where
// there are no rows.
struct FirstTextAtTheTill {
    std::string operator()(const LoadTable& action) const { return std::string("INSERT INTO ") + action.table + " "; }
    std::string operator()(const CopyRows& action) const {
        return std::string(action.keyed ? "select * from " : "INSERT INTO ") + action.table;
    }
    std::string operator()(const EditOneRow& action) const { return std::string("select * from ") + action.table; }
    std::string operator()(const auto&) const { return {}; }
};

// What a send sends, in its order: with each text the step that it belongs to and what the step is called then.
struct Marker {
    std::string text;
    int step = 0;
    std::string name;
    bool waits = false;     // its statements may go behind what is sent later
    bool passable = false;  // or it may send nothing
};

std::vector<Marker> markers() {
    std::vector<Marker> all;
    std::string name;
    bool tablesMade = false;  // the first that makes work tables makes those of all steps
    std::set<ReadWith> read;  // the first of a group reads for all
    for (const SendStep& step : sendSteps())
        for (const Action& action : *step.what) {
            if (std::holds_alternative<CreateTables>(action) && std::exchange(tablesMade, true)) continue;
            if (const auto* set = std::get_if<SetTransformation>(&action)) name = set->name;
            if (const auto* load = std::get_if<LoadTable>(&action)) name = load->caption;
            const ReadWith group = std::visit(GroupOf(), action);
            if (group != ReadWith::Nothing && !read.insert(group).second) {
                all.push_back({std::visit(FirstTextAtTheTill(), action), step.number, name, false, true});
                continue;
            }
            const bool waits = std::holds_alternative<Install>(action) || std::holds_alternative<DropTable>(action);
            if (const auto text = std::visit(FirstText(), action))
                all.push_back({*text, step.number, name, waits, waits});
        }
    return all;
}

// Tells each request's visit, part and step.
class Places {
public:
    void tell(SentRequest& request) {
        if (contains(request.text, "sp_getapplock") && contains(request.text, "TorvikPosSync.Kasse.")) {
            ++visit_;
            next_ = 0;
            part_ = SendPart::Beginning;
        } else if (contains(request.text, "sp_releaseapplock") && contains(request.text, "TorvikPosSync.Kasse.")) {
            part_ = SendPart::Ending;
        } else if (contains(request.text, "In_Gavekort_Va_ID")) {
            part_ = SendPart::GiftCardItem;
        } else if (contains(request.text, "EXEC sp_releaseapplock") && !contains(request.text, "sp_getapplock")) {
            part_ = SendPart::Numbering;
        } else if (const std::size_t marker = markerOf(request.text); marker < markers_.size()) {
            last_ = marker;
            next_ = marker + 1;
            while (markers_[next_ - 1].waits && next_ < markers_.size() && contains(request.text, markers_[next_].text))
                ++next_;
            part_ = SendPart::Steps;
        }
        request.visit = visit_;
        request.part = part_;
        if (part_ != SendPart::Steps) return;
        request.step = markers_[last_].step;
        request.name = markers_[last_].name;
    }

private:
    // The next one, past those that wait or send nothing.
    [[nodiscard]] std::size_t markerOf(const std::string& text) const {
        for (std::size_t i = next_; i < markers_.size(); ++i) {
            if (contains(text, markers_[i].text)) return i;
            if (!markers_[i].passable) break;
        }
        return markers_.size();
    }

    std::vector<Marker> markers_ = markers();
    std::size_t next_ = 0;
    std::size_t last_ = 0;  // the first marker of the last request that had one
    int visit_ = 0;
    SendPart part_ = SendPart::Roster;
};

TableLines readServer(sandbox::chain::DemoChain& chain, std::size_t server) {
    return server == kBackOffice ? readBackOffice(chain) : readTill(chain, server - kFirstTill);
}

// From the servers' logs; `before` is how many requests each had been sent when the run began.
void addStatements(sandbox::chain::DemoChain& chain, const std::vector<std::uint64_t>& before, RecordedSend& run) {
    for (std::size_t server = 0; server < before.size(); ++server) {
        std::uint64_t statements = 0;
        for (const sandbox::LoggedRequest& logged : serverOf(chain, server).faults().log()) {
            if (logged.request.serverNumber <= before[server]) continue;
            const std::uint64_t place = logged.request.serverNumber - before[server];
            for (SentRequest& request : run.requests)
                if (request.server == server && request.place == place) {
                    request.statements = logged.statements;
                    request.statementsBefore = statements;
                }
            statements += logged.statements.size();
        }
    }
}

}  // namespace

std::string sameEachSend(const std::string& text) {
    static const std::regex kNumber(R"(((?:Sesjon|Session)I[dD] *= *'|SesjonID\.)\d+)", std::regex::icase);
    return std::regex_replace(text, kNumber, "$1");
}

const TableLines& RecordedSend::held(std::size_t server, std::size_t request) const {
    for (std::size_t i = request; i < requests.size(); ++i)
        if (requests[i].server == server) return before[i];
    return server == kBackOffice ? end.backOffice : end.tills[server - kFirstTill];
}

ChainState RecordedSend::stateBefore(std::size_t request) const {
    ChainState state{.backOffice = held(kBackOffice, request), .tills = {}};
    for (std::size_t till = 0; till < end.tills.size(); ++till) state.tills.push_back(held(kFirstTill + till, request));
    return state;
}

std::size_t RecordedSend::beginOf(int visit) const {
    std::size_t index = 0;
    while (index < requests.size() && requests[index].visit < visit) ++index;
    return index;
}

std::vector<std::string> RecordedSend::tablesChangedBy(std::size_t request) const {
    return differingTables(before[request], held(requests[request].server, request + 1));
}

RecordedSend recordSend(sandbox::chain::DemoChain& chain, SendProgram& program) {
    RecordedSend run;
    Places places;
    std::mutex mutex;
    const std::vector<std::uint64_t> before = keepLogs(chain);
    QString ended;
    {
        const RequestWatch watch(chain, [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo& r) {
            const std::lock_guard lock(mutex);
            SentRequest request{.server = server, .place = place, .text = sameEachSend(r.text)};
            places.tell(request);
            run.requests.push_back(std::move(request));
            run.before.push_back(readServer(chain, server));
        });
        ended = program.send();
    }
    addStatements(chain, before, run);
    run.end = readState(chain);
    run.errors = program.errors();
    if (!ended.isEmpty()) run.errors << ended;
    run.status = program.status();
    return run;
}

}  // namespace torvik::test
