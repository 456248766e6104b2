// The list of workers, the main window's MainThreadList, which the engine's ThreadList names too. Main thread only:
// workers join it as they are made and leave it when the main thread has taken note of their end.
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class TTorvikPosThread;

struct TThreadItem {
    explicit TThreadItem(int id) : ID(id) {}
    // Ends and frees its worker if it still has one: a running one is asked to terminate and waited for.
    ~TThreadItem();
    TThreadItem(const TThreadItem&) = delete;
    TThreadItem& operator=(const TThreadItem&) = delete;

    const int ID;  // never given twice in one list
    TTorvikPosThread* AThread = nullptr;
    TNotifyEvent CallBackProc;  // called when the worker has ended
};

class TThreadCollection : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;
    ~TThreadCollection() override;  // frees the items, and with them their workers

    // The reference stays good until the item is freed.
    TThreadItem& Add();
    [[nodiscard]] int Count() const { return static_cast<int>(_items.size()); }
    [[nodiscard]] TThreadItem& operator[](int index) const { return *_items[static_cast<size_t>(index)]; }
    // Null when there is none.
    [[nodiscard]] TThreadItem* FindItemID(int ID) const;
    void Free(TThreadItem& item);

private:
    int _lastId = -1;
    std::vector<std::unique_ptr<TThreadItem>> _items;
};

}  // namespace torvik
