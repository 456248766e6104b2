// Gift cards and credit notes: what tells the two kinds apart is their texts alone. Used by VoucherRow and
// VoucherImport.
#pragma once

#include "inbound/pairs/till_mark.h"

namespace torvik {

struct VoucherKind {
    TillMark::Kind markKind;
    const char* prefix;    // of its columns
    const char* changed;   // the till's rows that have changed since they were fetched last
    const char* log;       // a line for each card
    const char* dropped;   // names the cards of a batch that was given up
    const char* issuedBy;  // the column of what issued it, behind the prefix
    const char* insert;
    const char* unlessThere;
    const char* update;
    const char* thisOne;
    const char* mark;
    const char* markedSince;  // the rows that carry a mark of a moment from :Fra to now, and the mark's text in Merket
    const char* redeemed;     // of the cards of a condition, those that the back office holds as redeemed
};

extern const VoucherKind kGavekort;
extern const VoucherKind kTilgodelapp;

}  // namespace torvik
