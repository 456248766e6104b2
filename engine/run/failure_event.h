// The structured event of a till that failed, the same for every run that tells one: where it was, its words, and
// beside them, as properties of their own, what the words do not say. See docs/run-status.md.
#pragma once

#include <QString>
#include <exception>

namespace torvik {

struct TillIdentity;

// words: a template with the places Avdeling, Kassenummer and Feilmelding, in this order. Properties, those that the
// failure has: Aarsak, Serversvar, Steg, Tabell, Feilnummer.
void LogTillFailure(const QString& words, const TillIdentity& till, const std::exception& failure);

}  // namespace torvik
