// One batch, with its own limit of time; it counts as done when the server has run all of it.
#include "shell/night/accumulation.h"

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

namespace torvik {

namespace {

constexpr int kTimeoutSeconds = 120;

constexpr char kAccumulate[] = R"(DECLARE @MaxLoop int
set @MaxLoop = 5
WHILE @MaxLoop > 0 AND EXISTS ( SELECT Pos_Op_Id, Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr
                            FROM PosOppgjor
                              WHERE Pos_Op_Status < 8 -- Not used for accumulation
                                    AND Pos_Op_Tidspunkt >= 0 --@FraDato
                                    AND POS_OP_TYPE='NORMAL' -- Do not include stock taking, only sales
                                   )
BEGIN
SET @MaxLoop = @MaxLoop -1
EXEC AccumulatePosData 0
END)";
constexpr char kUpdateStatistics[] = "EXEC UpdateVareStatistikk";

}  // namespace

void Accumulation::Execute(bool withStatistics) {
    if (HasAccumulatedData) return;
    QString line = QStringLiteral("Foretar automatisk akkumulering");
    if (withStatistics) line += QStringLiteral(", inkludert oppdatering av statistikk");
    engine_.AddLog(line);

    {
        db::Query batch(engine_.TargetConnection());
        batch.ParamCheck = false;
        batch.CommandTimeout = kTimeoutSeconds;
        batch.SQL = QString::fromUtf8(kAccumulate).split(u'\n');
        if (withStatistics) batch.SQL.append(QString::fromUtf8(kUpdateStatistics));
        batch.ExecSQL();
    }
    HasAccumulatedData = true;
}

}  // namespace torvik
