// Joining and leaving the list of workers.
#include "engine/workers/thread_collection.h"

#include <algorithm>

#include "engine/workers/torvik_pos_thread.h"

namespace torvik {

TThreadItem::~TThreadItem() {
    if (!AThread) return;
    AThread->EndWork();
    delete AThread;
}

TThreadCollection::~TThreadCollection() {
    while (!_items.empty()) Free(*_items.front());
}

TThreadItem& TThreadCollection::Add() {
    return *_items.emplace_back(std::make_unique<TThreadItem>(++_lastId));
}

TThreadItem* TThreadCollection::FindItemID(int ID) const {
    const auto found = std::ranges::find_if(_items, [ID](const auto& item) { return item->ID == ID; });
    return found == _items.end() ? nullptr : found->get();
}

// The item leaves the list before its worker goes, which looks for its item there.
void TThreadCollection::Free(TThreadItem& item) {
    const auto found = std::ranges::find_if(_items, [&](const auto& one) { return one.get() == &item; });
    if (found == _items.end()) return;
    const std::unique_ptr<TThreadItem> leaving = std::move(*found);
    _items.erase(found);
}

}  // namespace torvik
