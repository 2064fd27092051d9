#pragma once

#include <QList>

/**
 * Makes the functions of a list of cues that belong to the library's interface, which then stay in it whatever the compiler
 * inlines. Qt 6's list has not got all of them as functions of its own.
 */
#if QT_VERSION_MAJOR < 6
#define EXPORT_LIST(Item)                                                                                              \
    template void QList<Item>::append(const Item &);                                                                   \
    template QList<Item>::QList(const QList<Item> &);                                                                  \
    template QList<Item>::~QList()
#else
#define EXPORT_LIST(Item) static_assert(true)
#endif
