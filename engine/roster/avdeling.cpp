// The roster query as ten numbered lines of text, of which the filters rewrite one each.
#include "engine/roster/avdeling.h"

#include "engine/base/query_timeout.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/roster/kasse_collection.h"

namespace torvik {

namespace {

// The ten lines of the roster query. The setters rewrite single lines, so their numbers are part of the design.
enum Line {
    kActiveLine = 3,
    kTillsLine = 4,  // one department, or the work list
    kTillNumberLine = 5,
    kStoreTypesLine = 6,
    kExcludedLine = 7,
    kOrderLine = 9
};

const QString kBlank = QStringLiteral(" ");

QStringList rosterText() {
    return {
        QStringLiteral("SELECT Ku_Navn,Ku_Adresse1,Ik_Ku_Id,Ik_Avdelingsnummer,Ik_Modemtelefon,Ik_AntallKasser,"
                       "Ik_KasseBong1,Ik_KasseBong2,Ik_KasseBong3,Ik_KasseBong4,Ik_Foretaksnummer,Ik_Properties, "
                       "Ik_Butikktype, InternkundeKasse.*"),
        QStringLiteral("FROM Kunde,Internkunde,KasseType,Internkundekasse"),
        QStringLiteral("WHERE Ikk_Ik_Ku_Id=Ik_Ku_Id and Ik_Ku_Id=Ku_Id and Ikk_Kt_Id=Kt_Id AND Kt_Navn like "
                       "'%TorvikPOS%'"),
        QStringLiteral("AND Ikk_Aktiv=1"),
        QStringLiteral("AND ku_id>0"),
        kBlank,
        kBlank,
        kBlank,
        kBlank,
        QStringLiteral("ORDER BY Ik_Avdelingsnummer"),
    };
}

QString doubledQuotes(QString text) {
    return text.replace(u'\'', QStringLiteral("''"));
}

// " AND ((...) OR (...) )" over the tills of the work list, or nothing for an empty one.
QString tillCondition(const TKasseCollection& tills) {
    if (tills.Count() == 0) return {};
    QStringList conditions;
    for (int i = 0; i < tills.Count(); ++i) {
        conditions.append(QStringLiteral("(Ku_Id=%1 AND Ikk_Kassenummer='%2')")
                              .arg(QString::number(tills[i].Ik_Ku_ID), doubledQuotes(tills[i].Kassenr.trimmed())));
    }
    return QStringLiteral(" AND (") + conditions.join(u" OR ") + QStringLiteral(" )");
}

// "hh:ss:sss" with seconds in the minutes' place; more than two letters s still give two digits.
QString applicationName(const QDateTime& now) {
    const QString seconds = now.toString(u"ss");
    return now.toString(u"HH") + u':' + seconds + u':' + seconds;
}

}  // namespace

TAvdeling::TAvdeling(const EngineContext& context, TTorvikPos& torvikPos, QObject* owner)
    : QObject(owner),
      context_(context),
      torvikPos_(torvikPos),
      FAvdQry(std::make_unique<db::Query>()),
      fKasseCollection(std::make_shared<TKasseCollection>([context] { return context.Seam.now(); })) {
    FAvdQry->CommandTimeout = kQueryTimeout;
    FAvdQry->ParamCheck = false;  // an operator's own condition goes as he wrote it
    FAvdQry->SQL = rosterText();
}

TAvdeling::~TAvdeling() = default;

// Changes the text of the query, which runs again at once if it was open.
template <typename Change>
void TAvdeling::editQuery(Change change) {
    const bool wasOpen = FAvdQry->Active();
    FAvdQry->Close();
    change();
    if (wasOpen) FAvdQry->Open();
}

void TAvdeling::bindSession() {
    if (!FAvdQry->Connection()) FAvdQry->SetConnection(target_);
}

void TAvdeling::Open() {
    FAvdQry->Close();
    bindSession();
    SetKasseCollection(fKasseCollection);
    QString order = QStringLiteral("ORDER BY ");
    if (context_.Options.UsePlukkPrioritet) {
        order += u"Ik_PlukkPrioritet, Ik_FaktorForLagernivaa desc ";
        order += u", ";
    }
    order += u"Ik_Avdelingsnummer";
    if (context_.Options.ReverseProcessingOrder) order += u" DESC";
    FAvdQry->SQL[kOrderLine] = order;
    FAvdQry->Open();
}

void TAvdeling::Close() {
    FAvdQry->Close();
    FAvdQry->SetConnection(target_);
}

void TAvdeling::SetDisplayActiveOnly(bool value) {
    FDisplayActiveOnly = value;
    editQuery([&] { FAvdQry->SQL[kActiveLine] = value ? QStringLiteral("AND Ikk_Aktiv=1") : QString(); });
}

void TAvdeling::SetKu_Id(int value) {
    FKu_Id = value;
    editQuery([&] { FAvdQry->SQL[kTillsLine] = value >= 1 ? QStringLiteral("AND Ku_Id=%1").arg(value) : kBlank; });
}

void TAvdeling::SetIkk_Kassenummer(const QString& value) {
    FIkk_Kassenummer = value;
    editQuery([&] {
        FAvdQry->SQL[kTillNumberLine] =
            value.isEmpty() ? kBlank : QStringLiteral("AND Ikk_Kassenummer='%1'").arg(doubledQuotes(value));
    });
}

void TAvdeling::SetButikktyper(const QString& value) {
    FButikktyper = value;
    editQuery([&] {
        FAvdQry->SQL[kStoreTypesLine] =
            value.isEmpty() ? kBlank : QStringLiteral("AND Ik_Butikktype in (%1)").arg(value);
    });
}

void TAvdeling::SetExcludePosListSQL(const QString& value) {
    fExcludePosListSQL = value;
    editQuery([&] { FAvdQry->SQL[kExcludedLine] = value.isEmpty() ? kBlank : value; });
}

void TAvdeling::ClearFilter() {
    editQuery([&] {
        SetKu_Id(-1);
        SetDisplayActiveOnly(true);
        SetIkk_Kassenummer({});
    });
}

void TAvdeling::SetKasseCollection(std::shared_ptr<TKasseCollection> value) {
    fKasseCollection = std::move(value);
    if (FKu_Id != -1) return;
    editQuery([&] {
        ClearFilter();
        if (fKasseCollection) FAvdQry->SQL[kTillsLine] = tillCondition(*fKasseCollection);
    });
}

QString TAvdeling::currentText(const QString& column) const {
    return FAvdQry->Active() ? FAvdQry->FieldByName(column).AsString().trimmed() : QString();
}

QString TAvdeling::Ikk_Kassenummer() const {
    return currentText(QStringLiteral("Ikk_Kassenummer"));
}

QString TAvdeling::Avdelingsnummer() const {
    return currentText(QStringLiteral("IK_AVDELINGSNUMMER"));
}

void TAvdeling::AvdelingList(QStringList& AList) {
    AList.clear();
    Close();
    Open();
    for (; !FAvdQry->Eof(); FAvdQry->Next()) AList.append(currentText(QStringLiteral("Ku_Adresse1")));
}

int TAvdeling::GetIk_Ku_Id(const QString& Avd) {
    if (!FAvdQry->Active()) {
        bindSession();
        FAvdQry->Open();
    }
    db::Bookmark place = FAvdQry->GetBookmark();
    int result = -1;
    if (FAvdQry->Locate(QStringLiteral("IK_AVDELINGSNUMMER"), Avd.trimmed()))
        result = static_cast<int>(FAvdQry->FieldByName(QStringLiteral("IK_KU_ID")).AsInteger());
    FAvdQry->GotoBookmark(place);
    db::DataSet::FreeBookmark(place);
    return result;
}

void TAvdeling::FreeTillObjects() {
    qDeleteAll(findChildren<QObject*>(Qt::FindDirectChildrenOnly));
}

QString TAvdeling::GetSourceConnectionString() const {
    const QString database = currentText(QStringLiteral("Ikk_Database"));
    const QString server = currentText(QStringLiteral("Ikk_Server"));
    const QString application = applicationName(context_.Seam.now());
    if (FAvdQry->FieldByName(QStringLiteral("Ikk_AutentiseringType")).AsInteger() == 1) {
        return QStringLiteral(
                   "Provider=SQLOLEDB.1;Integrated Security=SSPI;Persist Security Info=False;Initial Catalog=%1;"
                   "Data Source=%2;Application Name=%3")
            .arg(database, server, application);
    }
    return QStringLiteral(
               "Provider=SQLOLEDB.1;Password=%1;Persist Security Info=True;User ID=%2;Initial Catalog=%3;"
               "Data Source=%4;Application Name=%5")
        .arg(currentText(QStringLiteral("Ikk_Passord")), currentText(QStringLiteral("Ikk_Brukernavn")), database,
             server, application);
}

}  // namespace torvik
