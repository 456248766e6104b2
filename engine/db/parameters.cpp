// See parameters.h.
#include "engine/db/parameters.h"

#include "engine/db/errors.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

bool startsName(QChar c) {
    return c.isLetter() || c == u'_';
}
bool continuesName(QChar c) {
    return c.isLetterOrNumber() || c == u'_' || c == u'$' || c == u'#';
}

}  // namespace

Parameter* Parameters::Find(const QString& name) const {
    for (const auto& parameter : list_)
        if (parameter->Name().compare(name, Qt::CaseInsensitive) == 0) return parameter.get();
    return nullptr;
}

Parameter& Parameters::ByName(const QString& name) const {
    if (Parameter* parameter = Find(name)) return *parameter;
    throw UsageError(QStringLiteral("Parameter '%1' not found").arg(name));
}

Parameter& Parameters::Add(const QString& name) {
    return *list_.emplace_back(std::make_unique<Parameter>(name));
}

void Parameters::Reset(const QStringList& names) {
    Parameters before;
    before.list_.swap(list_);
    for (const QString& name : names) {
        if (Find(name)) continue;
        Parameter& added = Add(name);
        if (const Parameter* old = before.Find(name)) {
            added = old->AsValue();
            if (old->Type()) added.SetType(*old->Type());
        }
    }
}

ScannedText scanParameters(const QString& text) {
    ScannedText result;
    qsizetype i = 0;
    const auto copyTo = [&](qsizetype end) {
        result.Text += QStringView(text).mid(i, end - i);
        i = end;
    };
    while (i < text.size()) {
        const qsizetype past = pastQuoted(text, i);
        if (past > i) {
            copyTo(past);
        } else if (text[i] != u':') {
            copyTo(i + 1);
        } else if (i + 1 < text.size() && text[i + 1] == u':') {
            copyTo(i + 2);
        } else if (i + 1 < text.size() && startsName(text[i + 1])) {
            qsizetype end = i + 1;
            while (end < text.size() && continuesName(text[end])) ++end;
            result.Names += text.mid(i + 1, end - i - 1);
            result.Text += u'?';
            i = end;
        } else {
            copyTo(i + 1);
        }
    }
    return result;
}

}  // namespace torvik::db
