// Reads case files (batches and the replies that a server must give, in the form that run_cases.py knows) and runs
// their cases on sessions of an engine in this process.
#pragma once

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "sandbox/tsql/run/engine.h"
#include "sandbox/tsql/run/session.h"
#include "tests/sandbox/support/reply_lines.h"

namespace sandbox::test {

struct CaseBatch {
    std::string session = "A";
    std::string sql;
    std::optional<std::vector<std::string>> want;  // none: the batch only prepares
};

struct Case {
    std::string file;  // without folder and extension
    std::string name;
    std::vector<CaseBatch> batches;

    friend void PrintTo(const Case& c, std::ostream* out) { *out << c.file << ": " << c.name; }
};

inline std::string strip(const std::string& text) {
    const auto from = text.find_first_not_of(" \t\r\n");
    if (from == std::string::npos) return {};
    return text.substr(from, text.find_last_not_of(" \t\r\n") - from + 1);
}

class CaseReader {
public:
    std::vector<Case> read(const std::string& path) {
        std::ifstream in(path);
        const auto slash = path.find_last_of('/');
        file_ = path.substr(slash == std::string::npos ? 0 : slash + 1);
        file_ = file_.substr(0, file_.rfind('.'));
        for (std::string line; std::getline(in, line);) take(line);
        flush();
        return std::move(cases_);
    }

private:
    void take(const std::string& line) {
        if (line.starts_with("## ")) {
            flush();
            cases_.push_back({file_, strip(line.substr(3)), {}});
            inReply_ = false;
        } else if (cases_.empty() || line.starts_with("# ")) {
            return;
        } else if (strip(line) == "go") {
            flush();
            inReply_ = false;
        } else if (strip(line) == "----") {
            inReply_ = true;
        } else if (!inReply_) {
            sql_.push_back(line);
        } else if (!strip(line).empty()) {
            reply_.push_back(line);
        }
    }

    void flush() {
        const bool any = std::any_of(sql_.begin(), sql_.end(), [](const auto& l) { return !strip(l).empty(); });
        if (!cases_.empty() && any) {
            CaseBatch batch;
            std::size_t first = 0;
            const std::string head = strip(sql_[0]);
            if (head.size() == 2 && head[0] == '@') {
                batch.session = head.substr(1);
                first = 1;
            }
            while (first < sql_.size() && sql_[first].empty()) ++first;
            while (!sql_.empty() && sql_.back().empty()) sql_.pop_back();
            for (std::size_t i = first; i < sql_.size(); ++i) batch.sql += (i > first ? "\n" : "") + sql_[i];
            if (inReply_) batch.want = reply_;
            cases_.back().batches.push_back(std::move(batch));
        }
        sql_.clear();
        reply_.clear();
    }

    std::string file_;
    std::vector<Case> cases_;
    std::vector<std::string> sql_, reply_;
    bool inReply_ = false;
};

// "*" stands for anything.
inline bool globMatches(const std::string& pattern, const std::string& text) {
    std::size_t p = 0, t = 0, star = std::string::npos, back = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            back = t;
        } else if (p < pattern.size() && (pattern[p] == text[t] || pattern[p] == '?')) {
            ++p;
            ++t;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++back;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

inline std::vector<std::string> splitColumns(const std::string& line) {
    std::vector<std::string> out{""};
    for (std::size_t i = 5; i < line.size(); ++i) {
        const bool between = line.compare(i, 2, ", ") == 0 && i + 2 < line.size() && !std::isdigit(line[i + 2]);
        if (between) {
            out.emplace_back();
            ++i;
        } else {
            out.back() += line[i];
        }
    }
    return out;
}

inline bool lineMatches(const std::string& want, const std::string& got) {
    if (want == got) return true;
    if (want.starts_with("cols ") && got.starts_with("cols ")) {
        const auto w = splitColumns(want), g = splitColumns(got);
        if (w.size() != g.size()) return false;
        for (std::size_t i = 0; i < w.size(); ++i) {
            const bool untyped = w[i].find(' ') == std::string::npos && w[i] == g[i].substr(0, g[i].rfind(' '));
            if (w[i] != g[i] && !untyped) return false;
        }
        return true;
    }
    return want.find('*') != std::string::npos && globMatches(want, got);
}

// Return statuses and "The statement has been terminated." count only where a case names them.
inline bool replyMatches(const CaseBatch& batch, std::vector<std::string> got) {
    if (!batch.want) {
        return std::none_of(got.begin(), got.end(), [](const auto& l) { return l.starts_with("error "); });
    }
    const auto& want = *batch.want;
    for (const std::string prefix : {"return ", "info 3621 "}) {
        const auto named = [&](const std::string& line) { return line.starts_with(prefix); };
        if (std::none_of(want.begin(), want.end(), named)) std::erase_if(got, named);
    }
    return std::equal(want.begin(), want.end(), got.begin(), got.end(), lineMatches);
}

// A database of its own for a test, and who logs in to it.
class TestDatabase {
public:
    TestDatabase(Engine& engine, std::string database) : database_(std::move(database)) {
        Session master(engine, {.user = "sa", .database = {}, .host = "here", .program = "tests", .language = {}});
        ReplyLines reply;
        master.batch("CREATE DATABASE " + database_, reply);
    }
    [[nodiscard]] LoginInfo login() const {
        return {.user = "sa", .database = database_, .host = "here", .program = "tests", .language = {}};
    }

private:
    std::string database_;
};

// What differs, as text; empty when the case passes.
inline std::string runCase(const Case& c) {
    Engine engine({});
    TestDatabase setup(engine, "cases_" + c.file);
    std::map<std::string, std::unique_ptr<Session>> sessions;
    std::ostringstream wrong;
    for (const CaseBatch& batch : c.batches) {
        auto& session = sessions[batch.session];
        if (!session) session = std::make_unique<Session>(engine, setup.login());
        ReplyLines reply;
        try {
            session->batch(batch.sql, reply);
        } catch (const std::exception& e) {
            reply.lines.push_back(std::string("broken ") + e.what());
            session.reset();
        }
        if (replyMatches(batch, reply.lines)) continue;
        wrong << batch.sql << "\n  wanted:\n";
        for (const auto& line : batch.want.value_or(std::vector<std::string>{"(no error)"}))
            wrong << "    " << line << "\n";
        wrong << "  got:\n";
        for (const auto& line : reply.lines) wrong << "    " << line << "\n";
    }
    return wrong.str();
}

}  // namespace sandbox::test
