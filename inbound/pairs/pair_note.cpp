#include "inbound/pairs/pair_note.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "engine/base/abort.h"

namespace torvik {

namespace {

using Json = nlohmann::ordered_json;

std::string utf8(const QString& text) {
    return text.toStdString();
}

QString text(const Json& object, const char* name) {
    return QString::fromStdString(object.at(name).get<std::string>());
}

Json jsonOf(const TillMark& mark) {
    Json key = Json::array();
    for (const QString& part : mark.key) key.push_back(utf8(part));
    return {{"slag", kindOf(mark).name}, {"nøkkel", key}, {"merke", utf8(mark.marked)}, {"før", utf8(mark.before)}};
}

TillMark markOf(const Json& json) {
    const auto name = json.at("slag").get<std::string>();
    const auto kinds = tillMarkKinds();
    const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const TillMarkKind& k) { return name == k.name; });
    if (kind == kinds.end()) throw EngineError(QStringLiteral("Ukjent merke \"%1\"").arg(QString::fromStdString(name)));
    TillMark mark{kind->kind, {}, text(json, "merke"), text(json, "før")};
    for (const Json& part : json.at("nøkkel")) mark.key << QString::fromStdString(part.get<std::string>());
    return mark;
}

}  // namespace

QByteArray PairNote::toJson() const {
    Json json = {
        {"par", utf8(intent.id.toString())}, {"hva", utf8(intent.subject)}, {"notat", utf8(intent.store.toString())},
        {"maskin", utf8(intent.machine)},    {"avdeling", Ik_Ku_Id},        {"kasse", utf8(KasseNr)}};
    if (settlement) json["oppgjør"] = {{"nummer", settlement->id}, {"tidspunkt", utf8(settlement->time)}};
    json["merker"] = Json::array();
    for (const TillMark& mark : marks) json["merker"].push_back(jsonOf(mark));
    return QByteArray::fromStdString(json.dump(1));
}

PairNote PairNote::fromJson(const QByteArray& bytes) {
    try {
        const Json json = Json::parse(bytes.begin(), bytes.end());
        PairNote note;
        note.intent = {
            QUuid(text(json, "par")), text(json, "hva"), QUuid(text(json, "notat")), text(json, "maskin"), {}};
        note.Ik_Ku_Id = json.at("avdeling").get<int>();
        note.KasseNr = text(json, "kasse");
        if (json.contains("oppgjør"))
            note.settlement =
                NotedSettlement{json["oppgjør"].at("nummer").get<qint64>(), text(json["oppgjør"], "tidspunkt")};
        for (const Json& mark : json.at("merker")) note.marks.push_back(markOf(mark));
        return note;
    } catch (const nlohmann::json::exception& e) {
        throw EngineError(QString::fromUtf8(e.what()));
    }
}

}  // namespace torvik
