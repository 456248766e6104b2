// See stored_proc.h.
#include "engine/db/stored_proc.h"

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/reply.h"

namespace torvik::db {

namespace {

const QString kReturnValue = QStringLiteral("RETURN_VALUE");

// How the server declares a variable that an output parameter of the type comes back in.
QString declaredType(FieldType type) {
    switch (type) {
        case FieldType::Bool: return QStringLiteral("bit");
        case FieldType::Integer: return QStringLiteral("bigint");
        case FieldType::Float: return QStringLiteral("float");
        case FieldType::Decimal: return QStringLiteral("decimal(38, 10)");
        case FieldType::DateTime: return QStringLiteral("datetime");
        case FieldType::Date: return QStringLiteral("date");
        case FieldType::Bytes: return QStringLiteral("varbinary(8000)");
        case FieldType::Guid: return QStringLiteral("uniqueidentifier");
        case FieldType::Text: break;
    }
    return QStringLiteral("nvarchar(4000)");
}

// Group number 1 is what a name without one means.
QString withoutFirstGroup(const QString& name) {
    return name.endsWith(u";1") ? name.chopped(2) : name;
}

}  // namespace

StoredProc::StoredProc(Session* session, QObject* parent) : QObject(parent), session_(session) {}

Parameter& StoredProc::ParamByName(const QString& name) {
    QString bare = name;
    while (bare.startsWith(u'@') || bare.startsWith(u':')) bare = bare.mid(1);
    if (Parameter* parameter = params_.Find(bare)) return *parameter;
    return params_.Add(bare);
}

int StoredProc::ReturnValue() const {
    const Parameter* parameter = params_.Find(kReturnValue);
    return parameter ? int(parameter->AsInteger()) : 0;
}

void StoredProc::ExecProc() {
    if (!session_) throw UsageError(QStringLiteral("The stored procedure has no connection"));
    if (StoredProcName.trimmed().isEmpty()) throw UsageError(QStringLiteral("The stored procedure has no name"));
    QString declare = QStringLiteral("DECLARE @torvik_return int");
    QString assign;
    QStringList arguments;
    QStringList results{QStringLiteral("@torvik_return")};
    std::vector<Parameter*> outputs;
    Request request;
    request.Timeout = CommandTimeout;
    request.Cancellable = true;
    std::vector<Argument> inputs;
    for (const auto& parameter : params_.All()) {
        if (parameter->Name().compare(kReturnValue, Qt::CaseInsensitive) == 0) continue;
        const FieldType type = parameter->Type().value_or(FieldType::Text);
        std::optional<FieldInfo> target;
        if (parameter->Type()) {
            target.emplace();
            target->Type = type;
            target->Legacy = type == FieldType::DateTime;
        }
        if (parameter->Output()) {
            const QString variable = QStringLiteral("@torvik_%1").arg(outputs.size());
            declare += QStringLiteral(", %1 %2").arg(variable, declaredType(type));
            assign += QStringLiteral(" SET %1 = ?").arg(variable);
            request.Arguments.push_back({parameter->AsValue(), target});
            arguments += QStringLiteral("@%1 = %2 OUTPUT").arg(parameter->Name(), variable);
            results += variable;
            outputs.push_back(parameter.get());
        } else {
            arguments += QStringLiteral("@%1 = ?").arg(parameter->Name());
            inputs.push_back({parameter->AsValue(), target});
        }
    }
    request.Arguments.insert(request.Arguments.end(), inputs.begin(), inputs.end());
    request.Text = declare + assign + QStringLiteral(" EXEC @torvik_return = ") +
                   withoutFirstGroup(StoredProcName.trimmed()) + u' ' + arguments.join(QStringLiteral(", ")) +
                   QStringLiteral(" SELECT ") + results.join(QStringLiteral(", "));

    const RowStore last = lastRows(session_->use(), request);
    if (last.rowCount() == 0 || last.columnCount() != int(outputs.size()) + 1)
        throw Error(QStringLiteral("The procedure %1 ended without its return value").arg(StoredProcName));
    ParamByName(kReturnValue) = last.value(0, 0);
    for (size_t i = 0; i < outputs.size(); ++i) *outputs[i] = last.value(0, int(i) + 1);
}

}  // namespace torvik::db
